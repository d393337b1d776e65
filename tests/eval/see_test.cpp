#include "eval/see.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "board/make_move.h"
#include "support/play.h"
#include "support/reference.h"

namespace quill::test {
namespace {

int seeOf(const char* fen, const char* squares) {
  Board board = boardOf(fen);
  return see(board, moveOf(board, squares));
}

TEST(See, ReferencePositionsAgree) {
  forEachReference([](const Board& board, const auto& reference) {
    std::size_t i = 0;
    for (const Move move : movesIn(reference["bits"])) {
      // Below 0 only the sign is promised.
      EXPECT_EQ(std::max(see(board, move), -1),
                std::max(reference["see"][i].template get<int>(), -1))
          << reference["moves"][i];
      ++i;
    }
    for (const auto& [name, expected] : reference["seeSquare"].items()) {
      const Square square = makeSquare(name[0] - 'a', name[1] - '1');
      EXPECT_EQ(seeSquare(board, square), expected) << name;
    }
  });
}

TEST(See, APieceThatLeavesALineOfTheKingPinsTheOneBehindIt) {
  // Once the knight has left the file, the rook on e1 pins the bishop that guards f5.
  EXPECT_EQ(seeOf("4k3/8/4b3/5p2/8/4N3/8/K3R3 w - -", "e3f5"), 1);
  EXPECT_LT(seeOf("4k3/8/4b3/5p2/8/4N3/8/KR6 w - -", "e3f5"), 0);
  // The same along a diagonal, for the rook that guards d6.
  EXPECT_EQ(seeOf("4k3/3r4/3p4/1N6/B7/8/8/K7 w - -", "b5d6"), 1);
}

TEST(See, PromotionsCountWhatTheyPromoteToAndTakingAnAdvancedPawnSavesAQueen) {
  // The pawn on c2 recaptures with promotion; the king's answer then wins back too little.
  EXPECT_LT(seeOf("4k3/8/8/8/8/8/2p5/1R1nK3 w - -", "b1d1"), 0);
  // A queen may take a defended pawn that stands one step from promotion.
  EXPECT_GE(seeOf("4k3/8/8/5b2/8/8/2p5/2Q1K3 w - -", "c1c2"), 0);
  EXPECT_LT(seeOf("4k3/8/8/4b3/8/2p5/8/2Q1K3 w - -", "c1c3"), 0);
  EXPECT_LT(seeOf("3r2k1/P7/8/8/8/8/8/K7 w - -", "a7a8"), 0);
}

TEST(See, TheMoveMayHaveBeenMadeAlready) {
  Board board = boardOf("3rk3/8/8/3p4/8/8/3R4/3RK3 w - -");
  const Move move = moveOf(board, "d2d5");
  EXPECT_EQ(see(board, move), 1);
  makeMove(board, move);
  updateAttackInfo(board);
  EXPECT_EQ(see(board, move), 1);
}

TEST(See, KingsInCaptureAreMerelyDear) {
  // Such positions come only from a careless FEN; any answer serves that is an answer.
  Board board = boardOf("4k3/8/8/8/8/8/4R3/K7 w - -");
  EXPECT_GT(see(board, makeCapture(E2, E8, board.squares[E8])), 50);
  EXPECT_LT(seeSquare(board, E8), -50);
}

TEST(SeeSquare, PinnedPiecesStillStandInTheWay) {
  EXPECT_EQ(seeSquare(boardOf("2rk4/2n5/2R5/B7/8/8/8/K7 w - -"), C6), 0);
  EXPECT_LT(seeSquare(boardOf("2rk4/8/2R5/B7/8/8/8/K7 w - -"), C6), 0);
}

}  // namespace
}  // namespace quill::test
