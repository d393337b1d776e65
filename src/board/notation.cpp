#include "board/notation.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>

#include "board/movegen.h"

namespace quill {

namespace {

// A move that no generator made may hold any byte as a square; the texts use its low six bits.
Square fromSquare(Move move) { return fromOf(move) & 63; }
Square toSquare(Move move) { return toOf(move) & 63; }

char fileChar(Square square) { return static_cast<char>('a' + fileOf(square)); }
char rankChar(Square square) { return static_cast<char>('1' + rankOf(square)); }

char* writeText(char* out, const char* text) {
  while (*text != '\0') *out++ = *text++;
  *out = '\0';
  return out;
}

char* writeSquare(char* out, Square square) {
  *out++ = fileChar(square);
  *out++ = rankChar(square);
  return out;
}

char* writePromotion(char* out, Move move) {
  if (isPromotion(move)) {
    *out++ = '=';
    *out++ = PromotionLetters[promotionOf(move)];
  }
  *out = '\0';
  return out;
}

// The texts of the moves that are not written with squares; null for all others.
const char* specialText(Move move) {
  if (move == NoMove) return "%";
  if (isCastling(move)) return wingOf(toSquare(move)) == ShortWing ? "O-O" : "O-O-O";
  return nullptr;
}

struct Origin {
  bool file = false;  // the origin's file is to be written
  bool rank = false;
};

// How much of the origin tells the move from moves of like pieces to the same square.
Origin disambiguate(const Board& board, Move move, std::span<const Move> legal) {
  const Square from = fromSquare(move);
  Origin origin;
  bool elsewhere = false;  // a rival shares neither file nor rank
  for (const Move rival : legal) {
    const Square other = fromOf(rival);
    if (toOf(rival) != toSquare(move) || other == from) continue;
    if (board.squares[other] != board.squares[from]) continue;
    if (fileOf(other) == fileOf(from)) {
      origin.rank = true;
    } else if (rankOf(other) == rankOf(from)) {
      origin.file = true;
    } else {
      elsewhere = true;
    }
  }
  if (elsewhere && !origin.rank) origin.file = true;
  return origin;
}

// What a text says about a move; -1 and 0 stand for "not said".
struct MovePattern {
  int toFile = -1;
  int toRank = -1;
  int fromFile = -1;
  int fromRank = -1;
  char piece = 0;
  char promotion = 0;
  int castlingLetters = 0;

  bool namesAllSquares() const {
    return toFile >= 0 && toRank >= 0 && fromFile >= 0 && fromRank >= 0;
  }

  bool agreesWith(const Board& board, Move move) const {
    const Square from = fromOf(move);
    const Square to = toOf(move);
    if (piece != 0 && piece != PieceLetters[typeOf(board.squares[from])]) return false;
    if (isPromotion(move)) {
      const char wanted = promotion != 0 ? promotion : 'Q';
      if (wanted != PromotionLetters[promotionOf(move)]) return false;
    }
    if (toFile >= 0 && toFile != fileOf(to)) return false;
    if (toRank >= 0 && toRank != rankOf(to)) return false;
    if (fromFile >= 0 && fromFile != fileOf(from)) return false;
    if (fromRank >= 0 && fromRank != rankOf(from)) return false;
    return castlingLetters == 0 || isCastling(move);
  }
};

bool isFileLetter(char c) { return c >= 'a' && c <= 'h'; }

// A piece letter after the squares names the promotion, one before them the piece.
void readPieceLetter(MovePattern& pattern, char letter) {
  if (pattern.toFile < 0) {
    pattern.promotion = letter;
    pattern.piece = 'P';
  } else {
    pattern.piece = letter;
  }
}

// Takes one character into the pattern; the text is read from its end. False for a character that
// no move contains.
bool readChar(MovePattern& pattern, char c) {
  if (isFileLetter(c)) {
    (pattern.toFile < 0 ? pattern.toFile : pattern.fromFile) = c - 'a';
    return true;
  }
  if (c >= '1' && c <= '8') {
    (pattern.toRank < 0 ? pattern.toRank : pattern.fromRank) = c - '1';
    return true;
  }
  switch (c) {
    case 'K':
    case 'P':
      pattern.piece = c;
      return true;
    case 'Q':
    case 'R':
    case 'B':
    case 'N':
      readPieceLetter(pattern, c);
      return true;
    case 'q':
    case 'r':
    case 'n':
      readPieceLetter(pattern, static_cast<char>(c - 'a' + 'A'));
      return true;
    case 'O':
    case 'o':
      ++pattern.castlingLetters;
      return true;
    default:
      return c != '\0' && std::strchr("x-=+#?! \t\n\r", c) != nullptr;
  }
}

bool readPattern(MovePattern& pattern, const char* text, std::FILE* messages) {
  const std::size_t length = std::strlen(text);
  for (std::size_t i = length; i-- > 0;) {
    // e7e8b promotes to a bishop, while bxc3 keeps its file.
    const bool bishop = text[i] == 'b' && i + 1 == length && length > 4 && isFileLetter(text[0]);
    if (!readChar(pattern, bishop ? 'B' : text[i])) {
      if (messages == nullptr) return false;
      std::fprintf(messages, "illegal char in move %s: %i\n", text,
                   static_cast<int>(static_cast<unsigned char>(text[i])));
      return false;
    }
  }
  return true;
}

// Fills in what the form of the text implies. False when it says too little to be a move.
bool completePattern(MovePattern& pattern) {
  if (pattern.piece != 0) return pattern.toFile >= 0 && pattern.toRank >= 0;
  if (pattern.castlingLetters != 0) {
    pattern.piece = 'K';
    pattern.toFile = pattern.castlingLetters == 2 ? fileOf(G1) : fileOf(C1);
    return pattern.castlingLetters == 2 || pattern.castlingLetters == 3;
  }
  if (pattern.namesAllSquares()) return true;
  pattern.piece = 'P';
  return pattern.toFile >= 0 && (pattern.fromFile >= 0 || pattern.toRank >= 0);
}

}  // namespace

char* moveToText(const Board& board, char* out, Move move) {
  if (const char* special = specialText(move)) return writeText(out, special);
  const Square from = fromSquare(move);
  const Square to = toSquare(move);
  const int type = typeOf(board.squares[board.squares[from] != 0 ? from : to]);
  if (type > Pawn) *out++ = PieceLetters[type];
  out = writeSquare(out, from);
  if (isCapture(move)) *out++ = 'x';
  return writePromotion(writeSquare(out, to), move);
}

void moveToSan(Board& board, char* out, Move move) {
  if (const char* special = specialText(move)) {
    writeText(out, special);
    return;
  }
  Move list[MaxMoves];
  const Square from = fromSquare(move);
  const int type = typeOf(board.squares[from]);
  Origin origin = disambiguate(board, move, {list, generateLegal(board, list)});
  if (type == Pawn && isCapture(move)) origin.file = true;
  if (type > Pawn) *out++ = PieceLetters[type];
  if (origin.file) *out++ = fileChar(from);
  if (origin.rank) *out++ = rankChar(from);
  if (isCapture(move)) *out++ = 'x';
  writePromotion(writeSquare(out, toSquare(move)), move);
}

Move parseMove(Board& board, const char* text, std::FILE* messages) {
  if (text == nullptr || text[0] == '%') return NoMove;
  MovePattern pattern;
  if (!readPattern(pattern, text, messages) || !completePattern(pattern)) return NoMove;
  Move list[MaxMoves];
  Move match = NoMove;
  for (const Move move : std::span(list, generateLegal(board, list))) {
    if (!pattern.agreesWith(board, move)) continue;
    if (match != NoMove) {
      if (messages == nullptr) return NoMove;
      char first[MoveTextSize];
      char second[MoveTextSize];
      moveToText(board, first, match);
      moveToText(board, second, move);
      std::fprintf(messages, "ambiguous move: %s _and_ %s\n", first, second);
      return NoMove;
    }
    match = move;
  }
  return match;
}

char* uciMoveText(char* out, Move move, PromotionCase promotionCase) {
  if (move == NoMove) return writeText(out, "0000");
  out = writeSquare(writeSquare(out, fromSquare(move)), toSquare(move));
  if (isPromotion(move)) {
    const char letter = PromotionLetters[promotionOf(move)];
    *out++ = promotionCase == PromotionCase::Lower ? static_cast<char>(letter - 'A' + 'a') : letter;
  }
  *out = '\0';
  return out;
}

}  // namespace quill
