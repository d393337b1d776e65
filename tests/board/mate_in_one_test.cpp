#include "board/mate_in_one.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "support/play.h"
#include "support/random_positions.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::boardOf;
using test::legalMovesOf;

// The move against the colour as squares, "" for none.
std::string mateAgainst(Colour colour, const std::string& fen) {
  const Board board = boardOf(fen);
  const Move move = findMateInOne(board, colour);
  if (move == NoMove) return "";
  EXPECT_EQ(capturedOf(move), board.squares[toOf(move)]) << fen;
  const auto name = [](Square square) {
    return std::string{static_cast<char>('a' + fileOf(square)),
                       static_cast<char>('1' + rankOf(square))};
  };
  return name(fromOf(move)) + name(toOf(move));
}

TEST(MateInOne, ReferencePositionsAgree) {
  for (const auto& position : test::referencePositions()) {
    const Board board = boardOf(position["getFen"]);
    for (const Colour colour : {White, Black}) {
      if (position["mate1"][colour].is_null()) continue;  // that king is in check already
      EXPECT_EQ(findMateInOne(board, colour), test::parseHex(position["mate1"][colour]))
          << position["getFen"] << " against " << (colour == White ? "White" : "Black");
    }
  }
}

TEST(MateInOne, QueenMatesInContactWhenDefended) {
  EXPECT_EQ(mateAgainst(Black, "r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq -"),
            "h5f7");
  EXPECT_EQ(mateAgainst(Black, "r1bqkb1r/pppp1ppp/2n2n2/4p2Q/4P3/8/PPPP1PPP/RNB1K1NR w KQkq -"),
            "");
  EXPECT_EQ(mateAgainst(White, "8/8/8/8/8/1k6/2q5/K7 b - -"), "c2a2");
  EXPECT_EQ(mateAgainst(White, "8/8/8/8/8/2k5/3q4/K7 b - -"), "d2b2");
  EXPECT_EQ(mateAgainst(White, "8/8/8/8/3k4/8/3q4/K7 b - -"), "") << "she doesn't defend herself";
}

TEST(MateInOne, BackRankMatesDependOnWhoCanInterpose) {
  EXPECT_EQ(mateAgainst(Black, "6k1/5ppp/8/8/8/8/8/R5K1 w - -"), "a1a8");
  // One interposer beside the king suffices; elsewhere it takes two.
  EXPECT_EQ(mateAgainst(Black, "6k1/5ppp/8/8/8/b7/8/1R4K1 w - -"), "");
  EXPECT_EQ(mateAgainst(Black, "6k1/3r1ppp/8/8/8/8/8/R5K1 w - -"), "a1a8");
  EXPECT_EQ(mateAgainst(Black, "6k1/3r1ppp/1n6/8/8/8/8/R5K1 w - -"), "");
}

TEST(MateInOne, SmotheredKingsFallToKnights) {
  EXPECT_EQ(mateAgainst(Black, "6rk/6pp/8/6N1/8/8/8/6K1 w - -"), "g5f7");
  EXPECT_EQ(mateAgainst(Black, "5rrk/6pp/8/6N1/8/8/8/6K1 w - -"), "") << "the rook takes on f7";
  EXPECT_EQ(mateAgainst(Black, "6rk/6p1/8/6N1/8/8/8/6K1 w - -"), "") << "h7 is free";
}

TEST(MateInOne, DiagonalMatesNeedEveryOtherSquareTakenAndNoInterposer) {
  EXPECT_EQ(mateAgainst(White, "4k3/4b3/8/8/6P1/5P2/3PP3/3QKB2 b - -"), "e7h4");
  EXPECT_EQ(mateAgainst(White, "4k3/4b3/8/8/6P1/5P2/3PP3/3QK3 b - -"), "") << "f1 is free";
  EXPECT_EQ(mateAgainst(White, "4k3/4b3/8/8/4N1P1/5P2/3PP3/3QKB2 b - -"), "") << "Ng3 parries";
}

TEST(MateInOne, PinnedPiecesNeitherMoveNorMate) {
  EXPECT_EQ(mateAgainst(Black, "6k1/5ppp/8/8/8/r2R2K1/8/8 w - -"), "");
  EXPECT_EQ(mateAgainst(Black, "6k1/5ppp/8/8/8/3R2K1/8/8 w - -"), "d3d8");
}

TEST(MateInOne, ARookInContactMayShutTheLineOfItsDefenderOnTheEdgeOnly) {
  EXPECT_EQ(mateAgainst(Black, "1R6/8/2B5/8/1N3K2/8/7k/1RR5 w - -"), "c1h1");
  EXPECT_EQ(mateAgainst(Black, "8/8/8/6Q1/R7/5k2/2K5/4Q3 w - -"), "");
  // On diagonals a bishop may not rely on a rook or queen, a queen may.
  EXPECT_EQ(mateAgainst(Black, "8/6B1/Q7/B2B4/1R2N3/k4P2/8/K7 w - -"), "");
  EXPECT_EQ(mateAgainst(Black, "1n1k4/8/4Q3/8/8/Q2K4/6NQ/4N3 w - -"), "a3e7");
}

TEST(MateInOne, PawnsAndKnightsInterposeByTheirOwnRules) {
  // A pawn steps in beside its king, on a rank and on a diagonal.
  EXPECT_EQ(mateAgainst(Black, "2r4Q/8/8/4P3/8/3K4/4p3/3k4 w - -"), "");
  EXPECT_EQ(mateAgainst(Black, "8/1Q4b1/6K1/1P1r1B2/4Q3/6p1/7Q/5k2 w - -"), "");
  // On a diagonal one knight is no parry, unless it stands beside its king or shields the enemy's.
  EXPECT_EQ(mateAgainst(Black, "8/8/8/7K/8/6B1/p3n3/kb6 w - -"), "g3e5");
  EXPECT_EQ(mateAgainst(Black, "8/8/8/7K/8/6B1/p3n3/kb1b4 w - -"), "");
  EXPECT_EQ(mateAgainst(Black, "4Q3/4K3/8/8/1Q5B/8/n2p1P2/k7 w - -"), "");
}

TEST(MateInOne, AKingThatIsInCheckAlreadyIsNeverCaptured) {
  // A careless FEN leaves the side not to move in check, along a file and along a diagonal.
  EXPECT_EQ(mateAgainst(White, "8/7r/8/8/k6r/8/6P1/5RBK b - -"), "");
  EXPECT_EQ(mateAgainst(White, "8/kq6/8/8/4b3/8/7P/6RK b - -"), "");
}

// What became of the moves that the detector reported.
struct Tally {
  int reported = 0;
  int mates = 0;
  int interposed = 0;  // parried by interpositions alone
  int missed = 0;      // mates by a piece that were there and not reported
};

// Plays a reported move and sorts it by the answers to it.
void judge(Board& board, Move move, Tally& tally) {
  const std::string before = test::describe(board);
  const UndoInfo undo = board;
  makeMove(board, move);
  updateAttackInfo(board);
  EXPECT_TRUE(board.isInCheck()) << before << " " << std::hex << move;
  const Square king = board.own().kingSquare;
  const std::vector<Move> answers = legalMovesOf(board);
  for (const Move answer : answers) {
    EXPECT_TRUE(fromOf(answer) != king && !isCapture(answer) &&
                contains(between[toOf(move)][king], toOf(answer)))
        << before << " " << std::hex << move << " is answered by " << answer;
  }
  ++tally.reported;
  ++(answers.empty() ? tally.mates : tally.interposed);
  unmakeMove(board, move, undo);
}

bool hasPieceMate(Board& board) {
  const UndoInfo undo = board;
  for (const Move move : legalMovesOf(board)) {
    const int type = typeOf(board.squares[fromOf(move)]);
    if (type == Pawn || type == King) continue;
    makeMove(board, move);
    updateAttackInfo(board);
    const bool isMate = board.isInCheck() && legalMovesOf(board).empty();
    unmakeMove(board, move, undo);
    if (isMate) return true;
  }
  return false;
}

// The patterns are no proof of mate: a distant check may be parried by an interposition that they
// count as too weak. Nothing else may answer a reported move.
TEST(MateInOneSlow, OnlyInterpositionsAnswerWhatItReports) {
  test::RandomPositions positions(17);
  Tally tally;
  for (int i = 0; i < test::PropertyPositions; ++i) {
    Board& board = positions.next();
    const Move move = findMateInOne(board, board.stm ^ 1);
    if (move != NoMove && isLegalMove(board, move)) {
      judge(board, move, tally);
    } else if (hasPieceMate(board)) {
      ++tally.missed;
    }
  }
  std::printf("%d reported: %d mates (%.1f%%), %d interposed; %d mates missed\n", tally.reported,
              tally.mates, 100.0 * tally.mates / tally.reported, tally.interposed, tally.missed);
  EXPECT_GT(tally.mates * 10, tally.reported * 8);
}

}  // namespace
}  // namespace quill
