#include "eval/see.h"

#include <gtest/gtest.h>

#include <string>

#include "board/make_move.h"
#include "support/play.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::boardOf;
using test::moveOf;

int seeOf(const char* fen, const char* squares) {
  Board board = boardOf(fen);
  return see(board, moveOf(board, squares));
}

int sign(int value) { return (value > 0) - (value < 0); }

TEST(See, EveryMoveOfTheReferencePositionsAgrees) {
  for (const auto& position : test::referencePositions()) {
    const Board board = boardOf(position["getFen"]);
    for (std::size_t i = 0; i < position["bits"].size(); ++i) {
      const int expected = position["see"][i];
      const int value = see(board, static_cast<Move>(test::parseHex(position["bits"][i])));
      EXPECT_EQ(expected < 0 ? sign(value) : value, expected < 0 ? -1 : expected)
          << position["getFen"] << " " << position["moves"][i];
    }
  }
}

TEST(See, HangingPiecesOfTheReferencePositionsAgree) {
  for (const auto& position : test::referencePositions()) {
    const Board board = boardOf(position["getFen"]);
    for (const auto& [name, expected] : position["seeSquare"].items()) {
      const Square square = makeSquare(name[0] - 'a', name[1] - '1');
      EXPECT_EQ(seeSquare(board, square), expected) << position["getFen"] << " " << name;
    }
  }
}

TEST(See, CapturesOfDearerPiecesAndUnattackedMovesAreSettledAtOnce) {
  EXPECT_EQ(seeOf("4k3/8/2p5/3n4/4P3/8/8/4K3 w - -", "e4d5"), 2);
  EXPECT_EQ(seeOf("4k3/8/8/8/8/5N2/8/4K3 w - -", "f3g5"), 0);
  EXPECT_EQ(seeOf("8/P7/8/8/8/8/8/k1K5 w - -", "a7a8"), 7);
}

TEST(See, DefendedTargetsCostTheCapturer) {
  EXPECT_LT(seeOf("4k3/8/2p5/3p4/8/8/3Q4/4K3 w - -", "d2d5"), 0);
  // The second rook joins in once the first has left the file.
  EXPECT_EQ(seeOf("4k3/8/2p5/3r4/8/8/3R4/3RK3 w - -", "d2d5"), 1);
  EXPECT_LT(seeOf("3rk3/8/2p5/3p4/8/8/3R4/3RK3 w - -", "d2d5"), 0);
}

TEST(See, KingsRecaptureOnlyWhereTheOtherKingDoesNotGuard) {
  EXPECT_LT(seeOf("8/8/4k3/3p4/8/8/3R4/6K1 w - -", "d2d5"), 0);
  EXPECT_EQ(seeOf("8/8/4k3/3p4/2K5/8/3R4/8 w - -", "d2d5"), 1);
}

TEST(See, AnUncoveredCheckLeavesTheRecaptureToTheKing) {
  // The knight uncovers the rook on e1: the pawn on c6 may not take it on d5, the king may.
  EXPECT_EQ(seeOf("4k3/8/2p5/3p4/8/4N3/8/K3R3 w - -", "e3d5"), 1);
  EXPECT_LT(seeOf("8/8/2p1k3/3p4/8/4N3/8/K3R3 w - -", "e3d5"), 0);
}

TEST(See, PiecesPinnedToTheirKingRecaptureOnlyAlongThePin) {
  // The knight on e6 is pinned by the rook and does not guard d4.
  EXPECT_EQ(seeOf("4k3/8/4n3/8/3p4/1N6/8/K3R3 w - -", "b3d4"), 1);
  // The rook on e6 is pinned along the file on which it recaptures.
  EXPECT_LT(seeOf("4k3/8/4r3/8/4p3/8/4Q3/K3R3 w - -", "e2e4"), 0);
}

TEST(See, APieceThatLeavesALineOfTheKingPinsTheOneBehindIt) {
  // Once the knight has left the file, the rook on e1 pins the bishop that guards f5.
  EXPECT_EQ(seeOf("4k3/8/4b3/5p2/8/4N3/8/K3R3 w - -", "e3f5"), 1);
  EXPECT_LT(seeOf("4k3/8/4b3/5p2/8/4N3/8/KR6 w - -", "e3f5"), 0);
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

TEST(SeeSquare, PinnedCapturersDoNotCountButStillBlock) {
  Board board = boardOf("4k3/4n3/8/2P5/8/8/8/K3R3 w - -");
  EXPECT_EQ(seeSquare(board, C5), 0);
  board = boardOf("4k3/4n3/2R5/8/8/8/8/K3R3 w - -");
  EXPECT_EQ(seeSquare(board, C6), 0) << "the pinned knight may not take the rook";
  board = boardOf("4k3/4n3/2R5/8/8/8/8/K2R4 w - -");
  EXPECT_EQ(seeSquare(board, C6), -4);
}

}  // namespace
}  // namespace quill
