#include "board/fen.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "board/make_move.h"
#include "board/zobrist.h"

namespace quill {

namespace {

// The castling letters in the order of FEN, with the right that each one claims.
struct CastlingField {
  char letter;
  std::uint8_t right;
  Colour colour;
  Wing wing;
};

constexpr CastlingField CastlingFields[] = {
    {'K', WhiteShort, White, ShortWing},
    {'Q', WhiteLong, White, LongWing},
    {'k', BlackShort, Black, ShortWing},
    {'q', BlackLong, Black, LongWing},
};

// Men of each type at the start of a game; more can only come from promotions.
constexpr int StartCount[] = {0, 8, 2, 2, 2, 1, 1};

// Reads the fields of a FEN text into a Board, one after the other.
class FenReader {
 public:
  // Without a stream, messages go nowhere.
  FenReader(Board& board, const char* text, std::FILE* messages)
      : board_(board), at_(text), messages_(messages) {}

  bool read() {
    board_.clear();
    if (!readPlacement() || !checkKings() || !checkMaterial()) return false;
    if (!readSideToMove() || !readCastling() || !readEnPassant()) return false;
    // Move counters may follow. The stacks start anew, so nothing needs them.
    updateAttackInfo(board_);
    return true;
  }

 private:
  [[gnu::format(printf, 2, 3)]] void report(const char* format, ...) const {
    if (messages_ == nullptr) return;
    std::va_list arguments;
    va_start(arguments, format);
    std::vfprintf(messages_, format, arguments);
    va_end(arguments);
  }

  bool atFieldEnd() const { return *at_ == '\0' || *at_ == ' '; }
  void skipBlanks() {
    while (*at_ == ' ') ++at_;
  }

  bool readPlacement() {
    int rank = 7;
    int file = 0;
    for (; !atFieldEnd(); ++at_) {
      if (rank < 0) {
        report("fen too long\n");
        return false;
      }
      if (*at_ == '/') {
        --rank;
        file = 0;
      } else if (*at_ >= '1' && *at_ <= '8' && file + (*at_ - '0') <= 8) {
        file += *at_ - '0';
      } else if (!addPiece(*at_, file, rank)) {
        report("fen: invalid input for %c%c: %c\n", 'a' + file, '1' + rank, *at_);
        return false;
      } else {
        ++file;
      }
    }
    return true;
  }

  // False when no piece has this letter, the rank is full, or a pawn can't stand there.
  bool addPiece(char letter, int file, int rank) {
    const char* const white = std::strchr(PieceLetters + 1, letter);
    const char* const black = std::strchr(BlackPieceLetters + 1, letter);
    if ((white == nullptr && black == nullptr) || file > 7) return false;
    const int type =
        static_cast<int>(white != nullptr ? white - PieceLetters : black - BlackPieceLetters);
    if (type == Pawn && (rank == 0 || rank == 7)) return false;
    board_.add(white != nullptr ? White : Black, type, makeSquare(file, rank));
    return true;
  }

  bool checkKings() const {
    for (const Colour colour : {White, Black}) {
      if (count(board_.side[colour].bb[King]) != 1) {
        report("fen: not exactly 1 king for side %i\n", colour);
        return false;
      }
    }
    return true;
  }

  // Each man beyond those of the start must be a promoted pawn. That limits a side to sixteen men,
  // which the four-bit counts of the material signature and the size of move lists rely on.
  bool checkMaterial() const {
    for (const Colour colour : {White, Black}) {
      const auto& bb = board_.side[colour].bb;
      int promoted = 0;
      for (int type = Knight; type <= Queen; ++type) {
        promoted += std::max(0, count(bb[type]) - StartCount[type]);
      }
      if (promoted > StartCount[Pawn] - count(bb[Pawn])) {
        report("fen: impossible material for side %i\n", colour);
        return false;
      }
    }
    return true;
  }

  bool readSideToMove() {
    skipBlanks();
    if (*at_ == '\0') return true;
    if (*at_ != 'w' && *at_ != 'b') {
      report("fen: invalid stm: %c\n", *at_);
      return false;
    }
    board_.stm = *at_++ == 'w' ? White : Black;
    return true;
  }

  bool readCastling() {
    skipBlanks();
    for (; !atFieldEnd(); ++at_) {
      if (*at_ == '-') {
        ++at_;
        break;
      }
      const auto* const field =
          std::find_if(std::begin(CastlingFields), std::end(CastlingFields),
                       [this](const CastlingField& f) { return f.letter == *at_; });
      if (field == std::end(CastlingFields)) {
        report("setFen(): illegal castling char: %c\n", *at_);
        return false;
      }
      grant(*field);
    }
    board_.key ^= castleKey[board_.castling];
    return true;
  }

  void grant(const CastlingField& field) {
    const CastleInfo& info = CastleTable[field.colour][field.wing];
    if (board_.squares[info.kingFrom] == makeCode(field.colour, King) &&
        board_.squares[info.rookFrom] == makeCode(field.colour, Rook)) {
      board_.castling = static_cast<std::uint8_t>(board_.castling | field.right);
    } else {
      report("castling %c invalid\n", field.letter);
    }
  }

  // The field names the square that the pawn passed over or the one where it stands. It is believed
  // here; the generators check for themselves that there is such a pawn.
  bool readEnPassant() {
    skipBlanks();
    if (at_[0] == '\0' || at_[1] == '\0' || at_[0] == '-') return true;
    const int file = at_[0] - 'a';
    int rank = at_[1] - '1';
    const bool onBoard = file >= 0 && file < 8 && rank >= 0 && rank < 8;
    if (!onBoard || makeSquare(file, rank) == 0) {
      report("setFen() invalid ep square\n");
      return false;
    }
    if (rank == 2) rank = 3;
    if (rank == 5) rank = 4;
    board_.epSquare = static_cast<std::uint8_t>(makeSquare(file, rank));
    board_.key ^= enPassantKey(board_.epSquare);
    return true;
  }

  Board& board_;
  const char* at_;  // next character to be read
  std::FILE* messages_;
};

char* writePlacement(const Board& board, char* out) {
  for (int rank = 7; rank >= 0; --rank) {
    int empty = 0;
    for (int file = 0; file < 8; ++file) {
      const PieceCode code = board.squares[makeSquare(file, rank)];
      if (code == 0) {
        ++empty;
        continue;
      }
      if (empty != 0) *out++ = static_cast<char>('0' + empty);
      empty = 0;
      *out++ = (belongsTo(code, White) ? PieceLetters : BlackPieceLetters)[typeOf(code)];
    }
    if (empty != 0) *out++ = static_cast<char>('0' + empty);
    if (rank != 0) *out++ = '/';
  }
  return out;
}

}  // namespace

bool setFen(Board& board, const char* text, std::FILE* messages) {
  Board scratch;
  if (!FenReader(scratch, text != nullptr ? text : "", messages).read()) return false;
  board = scratch;
  return true;
}

EngineString getFen(const Board& board) {
  char text[128];  // at most 71 characters of pieces, 10 of flags and two numbers
  char* out = writePlacement(board, text);
  *out++ = ' ';
  *out++ = board.stm == White ? 'w' : 'b';
  *out++ = ' ';
  for (const CastlingField& field : CastlingFields) {
    if ((board.castling & field.right) != 0) *out++ = field.letter;
  }
  if (board.castling == 0) *out++ = '-';
  *out++ = ' ';
  if (board.epSquare != 0) {
    *out++ = static_cast<char>('a' + fileOf(board.epSquare));
    *out++ = static_cast<char>('1' + rankOf(board.epSquare));
  } else {
    *out++ = '-';
  }
  std::snprintf(out, static_cast<std::size_t>(text + sizeof text - out), " %i %i",
                board.quietPlies(), board.gamePly() / 2 + 1);
  return EngineString(text);
}

}  // namespace quill
