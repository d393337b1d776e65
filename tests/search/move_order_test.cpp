#include "search/move_order.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>

#include "support/play.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::boardOf;
using test::legalMovesOf;
using test::moveOf;
using test::movesIn;

const KillerTable NoKillers{};

// The moves in the order of orderMoves, and how many of them are good.
struct Order {
  std::vector<Move> moves;
  int good;
};

Order orderOf(Board& board, const KillerTable& killers, int ply, Move hashMove = NoMove) {
  std::vector<Move> moves = legalMovesOf(board);
  const Move* const boundary =
      orderMoves(board, killers, ply, moves.data(), moves.data() + moves.size(), hashMove);
  return {moves, static_cast<int>(boundary - moves.data())};
}

TEST(MoveOrder, ReferencePositionsAgree) {
  for (const auto& position : test::referencePositions()) {
    if (!position.contains("order")) continue;
    Board board = boardOf(position["getFen"]);
    const Order order = orderOf(board, NoKillers, 1);
    EXPECT_EQ(order.moves, movesIn(position["order"]["bits"])) << position["getFen"];
    EXPECT_EQ(order.good, position["order"]["good"]) << position["getFen"];
  }
}

TEST(MoveOrder, ReferenceEvasionsAgree) {
  for (const auto& position : test::referencePositions()) {
    if (!position.contains("evasions")) continue;
    Board board = boardOf(position["getFen"]);
    std::vector<Move> moves = legalMovesOf(board);
    orderEvasions(board, moves.data(), moves.data() + moves.size(), NoMove);
    EXPECT_EQ(moves, movesIn(position["evasions"]["bits"])) << position["getFen"];
  }
}

class MoveOrderKillers : public testing::Test {
 protected:
  MoveOrderKillers() : board_(boardOf("4k3/7p/8/8/8/8/P7/RN2K3 w Q -")) {}

  // The place of the move among the ordered ones, the move being a killer of the ply.
  int placeAsKiller(Move move, int killerPly, int ply) {
    KillerTable killers{};
    updateKillers(killers, killerPly, move);
    const Order order = orderOf(board_, killers, ply);
    return static_cast<int>(std::find(order.moves.begin(), order.moves.end(), move) -
                            order.moves.begin());
  }

  Board board_;
};

TEST_F(MoveOrderKillers, ComeInTheOrderOfTheirPlies) {
  KillerTable killers{};
  const Move moves[] = {moveOf(board_, "a2a3"), moveOf(board_, "e1d1"), moveOf(board_, "b1a3"),
                        moveOf(board_, "e1d2"), moveOf(board_, "e1f1"), moveOf(board_, "b1c3")};
  killers[5] = {moves[0], moves[1]};
  killers[3] = {moves[2], moves[3]};
  killers[7] = {moves[4], moves[5]};
  const Move hashMove = moveOf(board_, "a2a4") | MarkFlag;
  const Order order = orderOf(board_, killers, 5, hashMove);
  EXPECT_EQ(order.good, 3) << "the hash move and the killers of this ply";
  EXPECT_TRUE(isSameMove(order.moves[0], hashMove));
  for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(order.moves[i + 1], moves[i]) << i;
}

TEST_F(MoveOrderKillers, OfNeighbourPliesAreLeftAloneAtBothEnds) {
  const Move move = moveOf(board_, "e1f1");
  EXPECT_GT(placeAsKiller(move, 0, 2), 0);
  EXPECT_EQ(placeAsKiller(move, 1, 3), 0);
  EXPECT_EQ(placeAsKiller(move, 101, 99), 0);
  EXPECT_GT(placeAsKiller(move, 102, 100), 0);
  EXPECT_EQ(placeAsKiller(move, 127, 127), 0);
}

TEST_F(MoveOrderKillers, CountOnceWhenTheyAreTheHashMove) {
  KillerTable killers{};
  const Move move = moveOf(board_, "e1f1");
  killers[4] = {move, move};
  EXPECT_EQ(orderOf(board_, killers, 4, move).good, 1);
}

TEST_F(MoveOrderKillers, ShiftDownWithoutTheMarkAndWithoutRepeating) {
  KillerTable killers{};
  const Move first = moveOf(board_, "a2a4") | MarkFlag;
  const Move second = moveOf(board_, "e1f1");
  updateKillers(killers, 9, first);
  updateKillers(killers, 9, withoutMark(first));
  EXPECT_EQ(killers[9][0], withoutMark(first));
  EXPECT_EQ(killers[9][1], NoMove);
  updateKillers(killers, 9, second);
  EXPECT_EQ(killers[9][0], second);
  EXPECT_EQ(killers[9][1], withoutMark(first));
}

TEST(MoveOrder, SortingIsASelectionThatLeavesTheTailAlone) {
  std::vector<Move> moves(12);
  std::iota(moves.begin(), moves.end(), 1u);
  std::vector<int> scores = {1, 5, 2, 5, 0, 9, 3, 4, 8, 7, 6, 5};
  sortMoves(moves.data(), scores.data(), 12, 8);
  EXPECT_EQ(scores, (std::vector<int>{9, 8, 7, 6, 5, 5, 5, 4, 0, 2, 1, 3}));
  EXPECT_EQ(moves, (std::vector<Move>{6, 9, 10, 11, 2, 4, 12, 8, 5, 3, 1, 7}));
  sortMoves(moves.data(), scores.data(), 12, 12);
  EXPECT_TRUE(std::is_sorted(scores.rbegin(), scores.rend()));
}

TEST(MoveOrder, KingsFleeToTheEdgeFromAStrongEnemyAndToTheCentreFromAWeakOne) {
  const auto firstEvasion = [](const char* fen, const char* hashMove) {
    Board board = boardOf(fen);
    std::vector<Move> moves = legalMovesOf(board);
    const Move hash = hashMove != nullptr ? moveOf(board, hashMove) | MarkFlag : NoMove;
    orderEvasions(board, moves.data(), moves.data() + moves.size(), hash);
    return moves.front();
  };
  EXPECT_EQ(firstEvasion("k3r2r/n7/8/8/8/4K3/8/8 w - -", nullptr), makeQuiet(E3, F2));
  EXPECT_EQ(firstEvasion("k3r2r/8/8/8/8/4K3/8/8 w - -", nullptr), makeQuiet(E3, D4));
  EXPECT_EQ(firstEvasion("k3r2r/8/8/8/8/4K3/8/8 w - -", "e3d2"), makeQuiet(E3, D2));
}

}  // namespace
}  // namespace quill
