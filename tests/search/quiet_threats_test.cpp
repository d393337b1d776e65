#include "search/quiet_threats.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "board/make_move.h"
#include "support/play.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::boardOf;
using test::legalMovesOf;
using test::moveOf;

int flagOf(Board& board, const char* squares, int margin) {
  const Move move = moveOf(board, squares);
  int flag = -1;
  flagQuietThreats(board, &move, &move + 1, &flag, margin);
  return flag;
}

TEST(QuietThreats, ReferencePositionsAgree) {
  test::forEachReference([](Board& board, const auto& reference) {
    if (!reference.contains("flags")) return;
    const std::vector<Move> moves = legalMovesOf(board);
    for (const auto& [margin, expected] : reference["flags"].items()) {
      std::vector<int> flags(moves.size(), -1);
      flagQuietThreats(board, moves.data(), moves.data() + moves.size(), flags.data(),
                       std::stoi(margin));
      EXPECT_EQ(flags, expected.template get<std::vector<int>>()) << margin;
    }
  });
}

TEST(QuietThreats, LinesThatTheLastTwoMovesOpenedAreWorthUsing) {
  Board board = boardOf("k7/p7/8/8/8/8/3B4/R2QK3 w - -");
  test::playMoves(board, "d2h6 a7a6");
  EXPECT_EQ(flagOf(board, "d1d3", 2000), Threatens) << "through d2";
  makeMove(board, moveOf(board, "h6f4"));
  makeNullMove(board);
  updateAttackInfo(board);
  EXPECT_EQ(flagOf(board, "d1d3", 2000), NoThreat) << "a null move vacates nothing";
}

}  // namespace
}  // namespace quill
