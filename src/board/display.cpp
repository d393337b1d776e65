#include "board/display.h"

#include <algorithm>
#include <array>

#include "board/fen.h"
#include "board/notation.h"

namespace quill {

namespace {

constexpr int HistorySize = 24;   // half-moves shown
constexpr int HistoryLines = 12;  // lines with two half-moves each, below the top frame
constexpr int RankOneLine = 15;   // the top frame is line 0

struct HistoryEntry {
  char text[MoveTextSize];
};

// The latest moves in algebraic notation, the newest first.
struct History {
  std::array<HistoryEntry, HistorySize> entries;
  int size = 0;

  char* append() { return entries[static_cast<unsigned>(size++)].text; }
  const char* takeOldest() { return size > 0 ? entries[static_cast<unsigned>(--size)].text : ""; }
};

using Squares = std::array<PieceCode, 64>;

// Puts the pieces back where they stood before the move.
void takeBack(Squares& squares, Move move, Colour mover) {
  if (move == NoMove) return;
  const Square from = fromOf(move);
  const Square to = toOf(move);
  squares[from] = isPromotion(move) ? makeCode(mover, Pawn) : squares[to];
  squares[to] = 0;
  if (isCapture(move)) squares[isEnPassant(move) ? to ^ 8 : to] = capturedOf(move);
  if (isCastling(move)) {
    const CastleInfo& info = CastleTable[mover][wingOf(move)];
    squares[info.rookFrom] = squares[info.rookTo];
    squares[info.rookTo] = 0;
  }
}

void setPieces(Board& board, const Squares& squares) {
  board.clear();
  for (Square square = 0; square < 64; ++square) {
    const PieceCode code = squares[square];
    if (code != 0) board.add(belongsTo(code, White) ? White : Black, typeOf(code), square);
  }
}

// A Board does not keep the castling rights and en-passant squares of earlier positions, so the
// moves cannot be unmade exactly. The pieces and the side to move are enough for the texts: neither
// castling nor en passant ever makes a longer one necessary.
History collectHistory(const Board& board) {
  History history;
  if (board.stm == Black) std::snprintf(history.append(), MoveTextSize, "...");
  Squares squares = board.squares;
  Colour mover = board.stm;
  Board past;
  for (int ply = board.ply; ply > 0 && history.size < HistorySize; --ply) {
    const Move move = board.moves[static_cast<unsigned>(ply)];
    mover ^= 1;
    takeBack(squares, move, mover);
    setPieces(past, squares);
    past.stm = mover;
    moveToSan(past, history.append(), move);
  }
  return history;
}

void printFrame(std::FILE* stream) { std::fputs("   +---+---+---+---+---+---+---+---+", stream); }

void printRank(const Board& board, int rank, std::FILE* stream) {
  std::fprintf(stream, " %i ", rank + 1);
  for (int file = 0; file < 8; ++file) {
    const PieceCode code = board.squares[makeSquare(file, rank)];
    if (code == 0) {
      std::fputs("|   ", stream);
    } else if (belongsTo(code, White)) {
      std::fprintf(stream, "|(%c)", PieceLetters[typeOf(code)]);
    } else {
      std::fprintf(stream, "|*%c*", BlackPieceLetters[typeOf(code)]);
    }
  }
  std::fputc('|', stream);
}

// One of the letters for each man that the colour has more of than the other side.
void printSurplus(const Board& board, Colour colour, const char* letters, std::FILE* stream) {
  for (int type = Queen; type >= Pawn; --type) {
    const int surplus = count(board.side[colour].bb[type]) - count(board.side[colour ^ 1].bb[type]);
    for (int i = 0; i < surplus; ++i) std::fputc(letters[type], stream);
  }
}

void printMaterial(const Board& board, std::FILE* stream) {
  const std::uint32_t white = board.side[White].material;
  const std::uint32_t black = board.side[Black].material;
  const int whitePoints = materialPoints(white) + pawnCount(white);
  const int blackPoints = materialPoints(black) + pawnCount(black);
  std::fprintf(stream, "  %i-%i=%i ", whitePoints, blackPoints, whitePoints - blackPoints);
  if (white == black) return;
  std::fputc(' ', stream);
  printSurplus(board, White, PieceLetters, stream);
  printSurplus(board, Black, BlackPieceLetters, stream);
}

void printKey(const char* label, std::uint64_t key, std::FILE* stream) {
  std::fprintf(stream, "%s=%08x%08x\n", label, static_cast<unsigned>(key >> 32),
               static_cast<unsigned>(key & 0xFFFFFFFF));
}

}  // namespace

void printBoard(const Board& board, std::FILE* stream) {
  if (stream == nullptr) stream = stdout;
  History history = collectHistory(board);
  int row = std::max(0, board.gamePly() - HistorySize) - 1;  // ply of the line's first move
  std::fputc('\n', stream);
  for (int line = 0; line < 17; ++line, row += 2) {
    if (line % 2 == 0) {
      printFrame(stream);
    } else {
      printRank(board, 7 - line / 2, stream);
    }
    if (line >= 1 && line <= HistoryLines && history.size > 0) {
      const char* first = history.takeOldest();
      const char* second = history.takeOldest();
      std::fprintf(stream, "  %2i. %-5s %-5s", row / 2 + 1, first, second);
    }
    if (line == RankOneLine) printMaterial(board, stream);
    std::fputc('\n', stream);
  }
  std::fputs("     a   b   c   d   e   f   g   h\n\n", stream);
  std::fprintf(stream, "%s\n", getFen(board).text());
  printKey(" hash", board.key, stream);
  printKey("phash", board.pawnKey, stream);
}

}  // namespace quill
