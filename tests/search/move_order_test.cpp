#include "search/move_order.h"

#include <gtest/gtest.h>

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
  test::forEachReference([](Board& board, const auto& reference) {
    std::vector<Move> moves = legalMovesOf(board);
    if (reference.contains("order")) {
      const Order order = orderOf(board, NoKillers, 1);
      EXPECT_EQ(order.moves, movesIn(reference["order"]["bits"]));
      EXPECT_EQ(order.good, reference["order"]["good"]);
    } else {
      orderEvasions(board, moves.data(), moves.data() + moves.size(), NoMove);
      EXPECT_EQ(moves, movesIn(reference["evasions"]["bits"]));
    }
  });
}

class MoveOrderKillers : public testing::Test {
 protected:
  MoveOrderKillers() : board_(boardOf("4k3/7p/8/8/8/8/P7/RN2K3 w Q -")) {}

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
  killers[5][1] = withoutMark(hashMove);
  EXPECT_EQ(orderOf(board_, killers, 5, hashMove).good, 2) << "a killer that is the hash move";
  EXPECT_TRUE(isSameMove(order.moves[0], hashMove));
  for (unsigned i = 0; i < 6; ++i) EXPECT_EQ(order.moves[i + 1], moves[i]) << i;
}

TEST_F(MoveOrderKillers, OfNeighbourPliesAreLeftAloneAtBothEnds) {
  const Move move = moveOf(board_, "e1f1");
  const struct {
    int killerPly, ply;
    bool isUsed;
  } cases[] = {{0, 2, false}, {1, 3, true}, {101, 99, true}, {102, 100, false}, {127, 127, true}};
  for (const auto& [killerPly, ply, isUsed] : cases) {
    KillerTable killers{};
    updateKillers(killers, killerPly, move);
    EXPECT_EQ(orderOf(board_, killers, ply).moves.front() == move, isUsed) << killerPly;
  }
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

TEST(MoveOrder, TheHashMoveIsTheFirstEvasion) {
  Board board = boardOf("k3r2r/8/8/8/8/4K3/8/8 w - -");
  std::vector<Move> moves = legalMovesOf(board);
  const Move hashMove = moveOf(board, "e3d2") | MarkFlag;
  orderEvasions(board, moves.data(), moves.data() + moves.size(), hashMove);
  EXPECT_EQ(moves.front(), withoutMark(hashMove));
}

}  // namespace
}  // namespace quill
