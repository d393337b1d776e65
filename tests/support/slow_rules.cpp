#include "support/slow_rules.h"

#include <algorithm>
#include <span>

namespace quill::test {

namespace {

struct Step {
  int file;
  int rank;
};

constexpr Step RookSteps[] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
constexpr Step BishopSteps[] = {{1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
constexpr Step QueenSteps[] = {{1, 0}, {-1, 0}, {0, 1},  {0, -1},
                               {1, 1}, {1, -1}, {-1, 1}, {-1, -1}};
constexpr Step KnightSteps[] = {{1, 2},   {2, 1},   {2, -1}, {1, -2},
                                {-1, -2}, {-2, -1}, {-2, 1}, {-1, 2}};
constexpr Step PawnSteps[2][2] = {{{-1, 1}, {1, 1}}, {{-1, -1}, {1, -1}}};

std::span<const Step> stepsOf(int type, Colour colour) {
  switch (type) {
    case Pawn:
      return PawnSteps[colour];
    case Knight:
      return KnightSteps;
    case Bishop:
      return BishopSteps;
    case Rook:
      return RookSteps;
    default:
      return QueenSteps;
  }
}

bool isSlider(int type) { return type == Bishop || type == Rook || type == Queen; }

// The square a step away, -1 beyond the edge.
Square stepFrom(Square square, Step step) {
  const int file = square % 8 + step.file;
  const int rank = square / 8 + step.rank;
  return file < 0 || file > 7 || rank < 0 || rank > 7 ? -1 : rank * 8 + file;
}

Colour colourOf(PieceCode code) { return (code & 8) != 0 ? White : Black; }

Square kingOf(const Squares& squares, Colour colour) {
  const auto* king = std::find(squares.begin(), squares.end(), makeCode(colour, King));
  return static_cast<Square>(king - squares.begin());
}

Bitboard attacksFrom(const Squares& squares, Square from) {
  const PieceCode code = squares[from];
  Bitboard attacks = 0;
  for (const Step step : stepsOf(typeOf(code), colourOf(code))) {
    for (Square to = stepFrom(from, step); to >= 0; to = stepFrom(to, step)) {
      attacks |= bit(to);
      if (squares[to] != 0 || !isSlider(typeOf(code))) break;
    }
  }
  return attacks;
}

Bitboard attacksOf(const Squares& squares, Colour colour) {
  Bitboard attacks = 0;
  for (Square from = 0; from < 64; ++from) {
    if (squares[from] != 0 && colourOf(squares[from]) == colour)
      attacks |= attacksFrom(squares, from);
  }
  return attacks;
}

class SlowGenerator {
 public:
  explicit SlowGenerator(const Board& board)
      : board_(board), squares_(board.squares), us_(board.stm) {}

  std::vector<Move> generate() {
    for (Square from = 0; from < 64; ++from) {
      if (squares_[from] == 0 || colourOf(squares_[from]) != us_) continue;
      if (typeOf(squares_[from]) == Pawn) {
        addPawnMoves(from);
      } else {
        addPieceMoves(from);
      }
    }
    addCastling(ShortWing, us_ == White ? WhiteShort : BlackShort);
    addCastling(LongWing, us_ == White ? WhiteLong : BlackLong);
    std::sort(moves_.begin(), moves_.end());
    return moves_;
  }

 private:
  bool isEnemy(Square square) const {
    const PieceCode code = squares_[square];
    return code != 0 && colourOf(code) != us_ && typeOf(code) != King;
  }

  // Plays the move and keeps it when the king is safe afterwards.
  void addIfLegal(Move move) {
    const Squares after = slowSquaresAfter(squares_, move);
    if (!contains(attacksOf(after, us_ ^ 1), kingOf(after, us_))) moves_.push_back(move);
  }

  void addPawnMove(Move move) {
    if (toOf(move) / 8 != 0 && toOf(move) / 8 != 7) return addIfLegal(move);
    for (const int type : {Knight, Bishop, Rook, Queen}) addIfLegal(withPromotion(move, type));
  }

  void addPawnMoves(Square from) {
    const int ahead = us_ == White ? 8 : -8;
    if (squares_[from + ahead] == 0) {
      addPawnMove(makeQuiet(from, from + ahead));
      if (from / 8 == (us_ == White ? 1 : 6) && squares_[from + 2 * ahead] == 0) {
        addIfLegal(makeQuiet(from, from + 2 * ahead) | DoubleStepFlag);
      }
    }
    for (const Step step : PawnSteps[us_]) {
      const Square to = stepFrom(from, step);
      if (to < 0) continue;
      if (isEnemy(to)) addPawnMove(makeCapture(from, to, squares_[to]));
      const Square passed = to - ahead;  // where a pawn to be taken en passant stands
      if (board_.epSquare != 0 && board_.epSquare == passed && squares_[to] == 0 &&
          squares_[passed] == makeCode(us_ ^ 1, Pawn) && passed / 8 == (us_ == White ? 4 : 3) &&
          squares_[to + ahead] == 0) {
        addIfLegal(makeCapture(from, to, squares_[passed]) | EnPassantFlag);
      }
    }
  }

  void addPieceMoves(Square from) {
    for (Bitboard rest = attacksFrom(squares_, from); rest != 0;) {
      const Square to = popLowest(rest);
      if (squares_[to] == 0 || isEnemy(to)) addIfLegal(makeCapture(from, to, squares_[to]));
    }
  }

  void addCastling(Wing wing, int right) {
    if ((board_.castling & right) == 0) return;
    const Square king = us_ == White ? E1 : E8;
    const int direction = wing == ShortWing ? 1 : -1;
    for (int i = 1; i <= (wing == ShortWing ? 2 : 3); ++i) {
      if (squares_[king + i * direction] != 0) return;
    }
    const Bitboard attacked = attacksOf(squares_, us_ ^ 1);
    if (contains(attacked, king) || contains(attacked, king + direction)) return;
    addIfLegal(makeQuiet(king, king + 2 * direction) | CastlingFlag);
  }

  const Board& board_;
  const Squares& squares_;
  const Colour us_;
  std::vector<Move> moves_;
};

// Whether the captures for the quiescence search comprise this legal move of a pawn.
bool isWantedPawnMove(const Board& board, Move move, Bitboard targets) {
  const Square to = toOf(move);
  if (isEnPassant(move)) return true;
  if (contains(slowBlockers(board.squares, board.stm), fromOf(move))) return isCapture(move);
  if (isPromotion(move)) return promotionOf(move) == Queen;
  if (isCapture(move)) return contains(targets, to);
  const int ahead = board.stm == White ? 8 : -8;
  return relativeRank(board.stm, to) == 6 && board.squares[to + ahead] == 0;
}

}  // namespace

Squares slowSquaresAfter(Squares squares, Move move) {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  const Colour us = colourOf(squares[from]);
  squares[to] = isPromotion(move) ? makeCode(us, promotionOf(move)) : squares[from];
  squares[from] = 0;
  if (isEnPassant(move)) squares[makeSquare(fileOf(to), rankOf(from))] = 0;
  if (isCastling(move)) {
    const Square corner = (fileOf(to) == 6 ? H1 : A1) + (us == White ? 0 : 56);
    squares[fileOf(corner) == 0 ? corner + 3 : corner - 2] = squares[corner];
    squares[corner] = 0;
  }
  return squares;
}

std::vector<Move> slowLegalMoves(const Board& board) { return SlowGenerator(board).generate(); }

std::vector<Move> slowCaptures(const Board& board, Bitboard targets) {
  std::vector<Move> moves;
  for (const Move move : slowLegalMoves(board)) {
    const bool wanted = typeOf(board.squares[fromOf(move)]) == Pawn
                            ? isWantedPawnMove(board, move, targets)
                            : isCapture(move) && contains(targets, toOf(move));
    if (wanted) moves.push_back(move);
  }
  return moves;
}

Bitboard slowAttacks(const Squares& squares, Colour colour) {
  Squares without = squares;
  without[kingOf(squares, colour ^ 1)] = 0;
  return attacksOf(without, colour);
}

Bitboard slowBlockers(const Squares& squares, Colour colour) {
  Bitboard blockers = 0;
  for (const Step step : QueenSteps) {
    const int slider = step.file == 0 || step.rank == 0 ? Rook : Bishop;
    Square blocker = -1;
    for (Square at = stepFrom(kingOf(squares, colour), step); at >= 0; at = stepFrom(at, step)) {
      if (squares[at] == 0) continue;
      const int type = typeOf(squares[at]);
      const bool enemySlider = colourOf(squares[at]) != colour && (type == slider || type == Queen);
      if (blocker >= 0) {
        if (enemySlider) blockers |= bit(blocker);
        break;
      }
      blocker = at;
    }
  }
  return blockers;
}

Bitboard slowSliderAttacks(int type, Square from, Bitboard occupied) {
  Bitboard attacks = 0;
  for (const Step step : stepsOf(type, White)) {
    for (Square to = stepFrom(from, step); to >= 0; to = stepFrom(to, step)) {
      attacks |= bit(to);
      if (contains(occupied, to)) break;
    }
  }
  return attacks;
}

std::string difference(const Board& a, const Board& b) {
  for (const Colour colour : {White, Black}) {
    if (a.side[colour].bb != b.side[colour].bb) return "bb";
    if (a.side[colour].kingSquare != b.side[colour].kingSquare) return "kingSquare";
    if (a.side[colour].material != b.side[colour].material) return "material";
  }
  if (a.squares != b.squares) return "squares";
  if (a.occupied != b.occupied) return "occupied";
  if (a.key != b.key) return "key";
  if (a.pawnKey != b.pawnKey) return "pawnKey";
  if (a.enemyAttacks != b.enemyAttacks) return "enemyAttacks";
  if (a.blockers != b.blockers) return "blockers";
  if (a.lastIrreversible != b.lastIrreversible) return "lastIrreversible";
  if (a.castling != b.castling) return "castling";
  if (a.epSquare != b.epSquare) return "epSquare";
  if (a.stm != b.stm) return "stm";
  if (a.ply != b.ply) return "ply";
  if (a.plyOffset != b.plyOffset) return "plyOffset";
  const auto used = static_cast<std::size_t>(a.ply);
  if (!std::equal(a.moves.begin(), a.moves.begin() + used + 1, b.moves.begin())) return "moves";
  if (!std::equal(a.keys.begin(), a.keys.begin() + used, b.keys.begin())) return "keys";
  return "";
}

}  // namespace quill::test
