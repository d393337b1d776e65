#include "shell/move_history.h"

#include <gtest/gtest.h>

#include "board/fen.h"
#include "board/make_move.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/random_positions.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

// A random legal move, or now and then a turn passed.
Move randomMove(Board& board, RandomPositions& random) {
  const std::vector<Move> moves = legalMovesOf(board);
  const bool passes = moves.empty() || (!board.isInCheck() && random.below(16) == 0);
  return passes ? NoMove : moves[random.below(static_cast<std::uint32_t>(moves.size()))];
}

TEST(MoveHistory, EveryMoveOfAGameIsTakenBackExactly) {
  RandomPositions random(88);
  for (const char* fen : VariedFens) {
    MoveHistory history;
    Board board = boardOf(fen);
    std::vector<Board> earlier;
    while (earlier.size() < 40 && !(legalMovesOf(board).empty() && board.isInCheck())) {
      earlier.push_back(board);
      history.play(board, randomMove(board, random));
    }
    for (; !earlier.empty(); earlier.pop_back()) {
      ASSERT_TRUE(history.takeBack(board)) << fen;
      ASSERT_EQ(difference(board, earlier.back()), "") << describe(earlier.back());
    }
    EXPECT_FALSE(history.takeBack(board)) << fen;
  }
}

// Long games are re-based now and then, which changes the plies that the board counts by.
TEST(MoveHistory, LongGamesAreTakenBackAsFarAsTheBoardRemembers) {
  RandomPositions random(89);
  MoveHistory history;
  Board board = boardOf("4k3/8/8/8/8/8/8/4K3 w - -");
  std::vector<std::string> earlier;
  while (earlier.size() < 2000) {
    earlier.emplace_back(getFen(board).text());
    history.play(board, randomMove(board, random));
  }
  ASSERT_GT(board.plyOffset, 0);
  std::size_t left = earlier.size();
  while (history.takeBack(board)) ASSERT_EQ(getFen(board).text(), earlier[--left]);
  EXPECT_EQ(board.ply, 0);
  EXPECT_LT(left, earlier.size() - 24);
}

TEST(MoveHistory, MovesOfOthersAreLeftAlone) {
  MoveHistory history;
  Board board = boardOf(StartFen);
  history.play(board, moveOf(board, "e2e4"));
  const Board typed = board;
  playMoves(board, "e7e5");
  EXPECT_FALSE(history.takeBack(board));
  board = boardOf("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq -");
  EXPECT_FALSE(history.takeBack(board));
  history.play(board, moveOf(board, "c7c5"));
  EXPECT_TRUE(history.takeBack(board));
  EXPECT_FALSE(history.takeBack(board));
  board = typed;
  EXPECT_FALSE(history.takeBack(board)) << "forgotten with the new position";
}

}  // namespace
}  // namespace quill::test
