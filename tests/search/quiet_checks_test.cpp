#include "search/quiet_checks.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "eval/see.h"
#include "support/play.h"
#include "support/random_positions.h"

namespace quill {
namespace {

using test::boardOf;
using test::legalMovesOf;
using test::moveOf;

std::vector<Move> quietChecksOf(const Board& board, Bitboard squares) {
  Move list[MaxMoves];
  Move* const end = generateQuietChecks(board, list, squares);
  return {list, end};
}

bool givesCheck(Board& board, Move move) {
  const UndoInfo undo = board;
  makeMove(board, move);
  updateAttackInfo(board);
  const bool isCheck = board.isInCheck();
  unmakeMove(board, move, undo);
  return isCheck;
}

// What the generator promises, found by making every legal move: checks that lose nothing, or that
// another piece gives, and pushes to the seventh rank. Pawns that capture or step twice are spared
// the test for a loss.
std::vector<Move> slowQuietChecks(Board& board, Bitboard squares) {
  std::vector<Move> wanted;
  const Square king = board.enemy().kingSquare;
  for (const Move move : legalMovesOf(board)) {
    if ((move & SpecialMask) != 0) continue;
    const Square from = fromOf(move);
    const Square to = toOf(move);
    const bool isPawn = typeOf(board.squares[from]) == Pawn;
    const bool isFree = isPawn && (isCapture(move) || (move & DoubleStepFlag) != 0);
    const bool isDiscovered =
        contains(board.blockers[board.stm ^ 1], from) && !contains(line[from][king], to);
    const bool isPush = isPawn && !isCapture(move) && relativeRank(board.stm, to) == 6 &&
                        !contains(board.blockers[board.stm], from);
    const bool isCheck = contains(squares, to) && givesCheck(board, move);
    if ((isCheck && (isDiscovered || isFree)) || ((isCheck || isPush) && see(board, move) >= 0)) {
      wanted.push_back(move);
    }
  }
  std::sort(wanted.begin(), wanted.end());
  return wanted;
}

TEST(QuietChecks, AreThoseThatMakingEveryMoveFinds) {
  test::RandomPositions positions(23);
  std::size_t checks = 0;
  for (int i = 0; i < test::PropertyPositions; ++i) {
    Board& board = positions.next();
    if (board.isInCheck()) continue;
    const Bitboard spared = (Bitboard{positions.bits()} << 32) | positions.bits();
    const Bitboard squares = ~board.own().bb[0] & spared;
    std::vector<Move> found = quietChecksOf(board, squares);
    std::sort(found.begin(), found.end());
    ASSERT_EQ(found, slowQuietChecks(board, squares)) << test::describe(board);
    checks += found.size();
  }
  EXPECT_GT(checks, test::PropertyPositions / 10u) << "the positions hardly test anything";
}

TEST(QuietChecks, NothingTakesAKingOrStepsOntoTheLastRank) {
  // A careless FEN leaves the enemy in check; promotions are another generator's.
  for (const char* fen : {"4k3/3P4/8/8/8/8/4R3/K7 w - -", "3k4/2P5/8/B7/8/8/8/K2R4 w - -"}) {
    const Board board = boardOf(fen);
    for (const Move move : quietChecksOf(board, ~Bitboard{0})) {
      EXPECT_TRUE(isLegalMove(board, move)) << fen << std::hex << " " << move;
    }
  }
}

}  // namespace
}  // namespace quill
