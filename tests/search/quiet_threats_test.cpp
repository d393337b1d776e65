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

int flagOf(const char* fen, const char* squares, int margin) {
  Board board = boardOf(fen);
  return flagOf(board, squares, margin);
}

TEST(QuietThreats, ReferencePositionsAgree) {
  for (const auto& position : test::referencePositions()) {
    if (!position.contains("flags")) continue;
    Board board = boardOf(position["getFen"]);
    const std::vector<Move> moves = legalMovesOf(board);
    for (const auto& [margin, expected] : position["flags"].items()) {
      std::vector<int> flags(moves.size(), -1);
      flagQuietThreats(board, moves.data(), moves.data() + moves.size(), flags.data(),
                       std::stoi(margin));
      EXPECT_EQ(flags, expected.get<std::vector<int>>()) << position["getFen"] << " " << margin;
    }
  }
}

TEST(QuietThreats, TheDearerTheTargetTheLargerTheMarginAtWhichItCounts) {
  struct Case {
    const char* target;
    int limit;  // the first margin at which a knight's attack on it no longer counts
  };
  for (const auto& [target, limit] : {Case{"q", 1100}, {"r", 700}, {"b", 500}, {"n", 500}}) {
    const std::string fen = std::string("7k/8/") + target + "7/8/8/3N4/8/7K w - -";
    EXPECT_EQ(flagOf(fen.c_str(), "d3c5", limit - 1), Threatens) << fen;
    EXPECT_EQ(flagOf(fen.c_str(), "d3c5", limit), NoThreat) << fen;
  }
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
