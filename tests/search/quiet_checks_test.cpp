#include "search/quiet_checks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "eval/see.h"
#include "search/move_order.h"
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

// The score of a check by the moved piece itself; nothing when it is no such check or loses
// material. Pawns check without that test when they capture or step twice.
constexpr int NotWanted = -1000;
int directScore(const Board& board, Move move) {
  const Square to = toOf(move);
  const Square king = board.enemy().kingSquare;
  const int type = typeOf(board.squares[fromOf(move)]);
  const bool isFree = type == Pawn && (isCapture(move) || (move & DoubleStepFlag) != 0);
  if (!isFree && see(board, move) < 0) return NotWanted;
  switch (type) {
    case Pawn:
      return isFree ? 0 : -3;
    case Knight:
      return -1;
    case Bishop:
      return -2;
    case Rook:
      return 0;
    default:
      return (3 - std::abs(fileOf(to) - fileOf(king)) - std::abs(rankOf(to) - rankOf(king))) * 4;
  }
}

// What the generator promises, found by making every legal move; with the best score of each.
std::map<Move, int> slowQuietChecks(Board& board, Bitboard squares) {
  std::map<Move, int> wanted;
  const Square king = board.enemy().kingSquare;
  for (const Move move : legalMovesOf(board)) {
    if ((move & SpecialMask) != 0) continue;
    const Square from = fromOf(move);
    const Square to = toOf(move);
    int score = NotWanted;
    if (contains(squares, to) && givesCheck(board, move)) {
      const bool isDiscovered =
          contains(board.blockers[board.stm ^ 1], from) && !contains(line[from][king], to);
      score = isDiscovered ? 256 + OrderValue[capturedType(move)] : directScore(board, move);
    }
    const bool isPush = typeOf(board.squares[from]) == Pawn && !isCapture(move) &&
                        relativeRank(board.stm, to) == 6 &&
                        !contains(board.blockers[board.stm], from);
    if (isPush && see(board, move) >= 0) score = std::max(score, 0);
    if (score != NotWanted) wanted[move] = score;
  }
  return wanted;
}

TEST(QuietChecks, AreThoseThatMakingEveryMoveFindsBestFirst) {
  test::RandomPositions positions(23);
  int checks = 0;
  for (int i = 0; i < test::PropertyPositions; ++i) {
    Board& board = positions.next();
    if (board.isInCheck()) continue;
    const Bitboard spared = (Bitboard{positions.bits()} << 32) | positions.bits();
    const Bitboard squares = ~board.occupied | (board.enemy().bb[0] & spared);
    const std::map<Move, int> wanted = slowQuietChecks(board, squares);
    const std::vector<Move> found = quietChecksOf(board, squares);
    ASSERT_EQ(found.size(), wanted.size()) << test::describe(board);
    int last = 1000;
    for (const Move move : found) {
      ASSERT_TRUE(isLegalMove(board, move)) << test::describe(board) << std::hex << " " << move;
      ASSERT_EQ(wanted.count(move), 1u) << test::describe(board) << std::hex << " " << move;
      EXPECT_LE(wanted.at(move), last) << test::describe(board);
      last = wanted.at(move);
    }
    std::vector<Move> unique = found;
    std::sort(unique.begin(), unique.end());
    EXPECT_EQ(std::unique(unique.begin(), unique.end()), unique.end()) << test::describe(board);
    checks += static_cast<int>(found.size());
  }
  EXPECT_GT(checks, test::PropertyPositions / 10) << "the positions hardly test anything";
}

TEST(QuietChecks, PushesToTheSeventhComeWhateverTheSquares) {
  Board board = boardOf("8/8/P6k/8/8/8/8/K7 w - -");
  EXPECT_EQ(quietChecksOf(board, 0), std::vector<Move>{moveOf(board, "a6a7")});
  // The push uncovers a check as well: once, and ahead of the direct check.
  board = boardOf("8/8/R1P4k/8/8/8/3R4/K7 w - -");
  const std::vector<Move> moves = quietChecksOf(board, ~board.occupied);
  EXPECT_EQ(moves.front(), moveOf(board, "c6c7"));
  EXPECT_EQ(std::count(moves.begin(), moves.end(), moves.front()), 1);
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
