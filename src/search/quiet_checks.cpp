#include "search/quiet_checks.h"

#include <cstdlib>

#include "board/attacks.h"
#include "eval/see.h"
#include "search/move_order.h"

namespace quill {

namespace {

// Order scores. A discovered check comes before any direct one.
constexpr int DiscoveredScore = 256;
constexpr int PawnPushScore = 0;  // onto the seventh rank
constexpr int PawnStepCheckScore = -3;
constexpr int PawnCaptureCheckScore = 0;
constexpr int PawnDoubleCheckScore = 0;
constexpr int KnightCheckScore = -1;
constexpr int BishopCheckScore = -2;
constexpr int RookCheckScore = 0;

// A queen checks best from close by.
int queenCheckScore(Square queen, Square king) {
  const int files = std::abs(fileOf(queen) - fileOf(king));
  const int ranks = std::abs(rankOf(queen) - rankOf(king));
  return (3 - files - ranks) * 4;
}

class CheckGenerator {
 public:
  CheckGenerator(const Board& board, Move* list, Bitboard squares);
  Move* generate();

 private:
  void addPushesToSeventh();
  void addDiscoveredChecks();
  void addDiscoveredPawnMoves(Square from, Bitboard offLine);
  void addPawnChecks();
  void addPieceChecks();

  void add(Move move, int score) {
    *end_++ = move;
    *score_++ = score;
  }
  void addIfSound(Move move, int score) {
    if (see(board_, move) >= 0) add(move, score);
  }
  Move moveTo(Square from, Square to) const { return makeCapture(from, to, board_.squares[to]); }

  // The squares that a piece may go to without opening a line to its own king.
  Bitboard freedom(Square from) const {
    return contains(pinned_, from) ? line[own_.kingSquare][from] : ~Bitboard{0};
  }
  Bitboard forward(Bitboard set) const { return shiftForward(us_, set); }
  Bitboard back(Bitboard set) const { return shiftForward(us_ ^ 1, set); }

  const Board& board_;
  const Side& own_;
  const Side& enemy_;
  const Colour us_;
  const Square enemyKing_;
  const Bitboard pinned_;   // pieces that shield our king
  const Bitboard masking_;  // pieces that mask one of our sliders from the enemy king
  const Bitboard empty_;
  const Bitboard targets_;         // squares that a check may go to
  Bitboard seventhRankSteps_ = 0;  // origins of the pawns of the first group
  Move* const first_;
  Move* end_;
  int scores_[MaxMoves];
  int* score_ = scores_;
};

CheckGenerator::CheckGenerator(const Board& board, Move* list, Bitboard squares)
    : board_(board),
      own_(board.own()),
      enemy_(board.enemy()),
      us_(board.stm),
      enemyKing_(enemy_.kingSquare),
      pinned_(board.blockers[us_]),
      masking_(board.blockers[us_ ^ 1]),
      empty_(~board.occupied),
      targets_(squares & ~own_.bb[0]),
      first_(list),
      end_(list) {}

Move* CheckGenerator::generate() {
  addPushesToSeventh();
  addDiscoveredChecks();
  addPawnChecks();
  addPieceChecks();
  const int count = static_cast<int>(end_ - first_);
  sortMoves(first_, scores_, count, count);
  return end_;
}

// Every move comes once: a push that uncovers a check is left to the discovered checks.
void CheckGenerator::addPushesToSeventh() {
  Bitboard pawns = own_.bb[Pawn] & relativeRankMask(us_, 5) & ~pinned_ & back(empty_);
  const Bitboard kingFile = fileRank[enemyKing_].file;
  pawns &= ~(masking_ & ~kingFile & back(targets_));
  seventhRankSteps_ = pawns;
  while (pawns != 0) {
    const Bitboard pawn = pawns & (~pawns + 1);
    addIfSound(makeQuiet(popLowest(pawns), lowestSquare(forward(pawn))), PawnPushScore);
  }
}

void CheckGenerator::addDiscoveredChecks() {
  for (Bitboard masking = masking_ & own_.bb[0]; masking != 0;) {
    const Square from = popLowest(masking);
    const Bitboard offLine = targets_ & ~line[from][enemyKing_] & freedom(from);
    Bitboard destinations = 0;
    switch (typeOf(board_.squares[from])) {
      case Pawn:
        addDiscoveredPawnMoves(from, offLine);
        break;
      case Knight:
        destinations = knightAttacks[from];
        break;
      case Bishop:
        destinations = bishopAttacks(from, board_.occupied);
        break;
      case Rook:
        destinations = rookAttacks(from, board_.occupied);
        break;
      case King:
        destinations = kingAttacks[from] & ~board_.enemyAttacks;
        break;
      default:
        break;  // a queen that masks a line would give check already
    }
    for (destinations &= offLine; destinations != 0;) {
      const Move move = moveTo(from, popLowest(destinations));
      add(move, DiscoveredScore + OrderValue[capturedType(move)]);
    }
  }
}

void CheckGenerator::addDiscoveredPawnMoves(Square from, Bitboard offLine) {
  const Bitboard allowed = offLine & ~(rankMask(0) | rankMask(7));
  const Bitboard step = forward(bit(from)) & empty_;
  if ((step & allowed) != 0) add(makeQuiet(from, lowestSquare(step)), DiscoveredScore);
  const Bitboard doubleStep = forward(step & relativeRankMask(us_, 2)) & empty_;
  if ((doubleStep & allowed) != 0) {
    add(makeQuiet(from, lowestSquare(doubleStep)) | DoubleStepFlag, DiscoveredScore);
  }
  for (Bitboard captures = pawnAttacks[us_][from] & enemy_.bb[0] & allowed; captures != 0;) {
    const Move move = moveTo(from, popLowest(captures));
    add(move, DiscoveredScore + OrderValue[capturedType(move)]);
  }
}

void CheckGenerator::addPawnChecks() {
  const Bitboard checking = pawnAttacks[us_ ^ 1][enemyKing_] & targets_;
  const Bitboard pawns = own_.bb[Pawn] & ~masking_;
  for (Bitboard steps = checking & empty_ & forward(pawns & ~seventhRankSteps_); steps != 0;) {
    const Bitboard step = steps & (~steps + 1);
    const Square from = lowestSquare(back(step));
    const Square to = popLowest(steps);
    if (contains(freedom(from), to)) addIfSound(makeQuiet(from, to), PawnStepCheckScore);
  }
  for (Bitboard captures = checking & enemy_.bb[0]; captures != 0;) {
    const Square to = popLowest(captures);
    for (Bitboard capturers = pawnAttacks[us_ ^ 1][to] & pawns; capturers != 0;) {
      const Square from = popLowest(capturers);
      if (contains(freedom(from), to)) add(moveTo(from, to), PawnCaptureCheckScore);
    }
  }
  // Only a king on our fifth rank is reached from where a double step ends.
  const Bitboard passed = forward(pawns & relativeRankMask(us_, 1)) & empty_;
  for (Bitboard doubles = checking & empty_ & forward(passed); doubles != 0;) {
    const Bitboard landing = doubles & (~doubles + 1);
    const Square from = lowestSquare(back(back(landing)));
    const Square to = popLowest(doubles);
    if (contains(freedom(from), to)) {
      add(makeQuiet(from, to) | DoubleStepFlag, PawnDoubleCheckScore);
    }
  }
}

void CheckGenerator::addPieceChecks() {
  const Bitboard fromKnight = knightAttacks[enemyKing_] & targets_;
  const Bitboard fromBishop = bishopAttacks(enemyKing_, board_.occupied) & targets_;
  const Bitboard fromRook = rookAttacks(enemyKing_, board_.occupied) & targets_;
  const auto addChecks = [this](Square from, Bitboard destinations, int score) {
    destinations &= freedom(from);
    while (destinations != 0) addIfSound(moveTo(from, popLowest(destinations)), score);
  };
  // What a masking piece can reach was added as a discovered check.
  for (Bitboard knights = own_.bb[Knight] & ~masking_ & ~pinned_; knights != 0;) {
    const Square from = popLowest(knights);
    addChecks(from, knightAttacks[from] & fromKnight, KnightCheckScore);
  }
  for (Bitboard bishops = own_.bb[Bishop] & ~masking_; bishops != 0;) {
    const Square from = popLowest(bishops);
    addChecks(from, bishopAttacks(from, board_.occupied) & fromBishop, BishopCheckScore);
  }
  for (Bitboard rooks = own_.bb[Rook] & ~masking_; rooks != 0;) {
    const Square from = popLowest(rooks);
    addChecks(from, rookAttacks(from, board_.occupied) & fromRook, RookCheckScore);
  }
  for (Bitboard queens = own_.bb[Queen] & ~masking_; queens != 0;) {
    const Square from = popLowest(queens);
    Bitboard destinations = queenAttacks(from, board_.occupied) & (fromBishop | fromRook);
    for (destinations &= freedom(from); destinations != 0;) {
      const Square to = popLowest(destinations);
      addIfSound(moveTo(from, to), queenCheckScore(to, enemyKing_));
    }
  }
}

}  // namespace

Move* generateQuietChecks(const Board& board, Move* list, Bitboard squares) {
  return CheckGenerator(board, list, squares).generate();
}

}  // namespace quill
