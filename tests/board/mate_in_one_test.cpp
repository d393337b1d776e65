#include "board/mate_in_one.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "support/play.h"
#include "support/random_positions.h"
#include "support/reference.h"

namespace quill::test {
namespace {

TEST(MateInOne, ReferencePositionsAgree) {
  forEachReference([](const Board& board, const auto& reference) {
    for (const Colour colour : {White, Black}) {
      if (reference["mate1"][colour].is_null()) continue;  // that king is in check already
      EXPECT_EQ(findMateInOne(board, colour), parseHex(reference["mate1"][colour]))
          << "against " << (colour == White ? "White" : "Black");
    }
  });
}

TEST(MateInOne, PatternsAreMatesOrNot) {
  const struct {
    const char* fen;   // the mating side to move
    const char* mate;  // "" for none
  } cases[] = {
      // A queen beside the king, defended; she doesn't defend herself.
      {"r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq -", "h5f7"},
      {"r1bqkb1r/pppp1ppp/2n2n2/4p2Q/4P3/8/PPPP1PPP/RNB1K1NR w KQkq -", ""},
      {"8/8/8/8/8/1k6/2q5/K7 b - -", "c2a2"},
      {"8/8/8/8/8/2k5/3q4/K7 b - -", "d2b2"},
      {"8/8/8/8/3k4/8/3q4/K7 b - -", ""},
      // The back rank: one interposer beside the king suffices; elsewhere it takes two.
      {"6k1/5ppp/8/8/8/8/8/R5K1 w - -", "a1a8"},
      {"6k1/5ppp/8/8/8/b7/8/1R4K1 w - -", ""},
      {"6k1/3r1ppp/8/8/8/8/8/R5K1 w - -", "a1a8"},
      {"6k1/3r1ppp/1n6/8/8/8/8/R5K1 w - -", ""},
      // Smothered kings: mate, the rook takes on f7, h7 is free.
      {"6rk/6pp/8/6N1/8/8/8/6K1 w - -", "g5f7"},
      {"5rrk/6pp/8/6N1/8/8/8/6K1 w - -", ""},
      {"6rk/6p1/8/6N1/8/8/8/6K1 w - -", ""},
      // Along a diagonal: mate, f1 is free, Ng3 parries.
      {"4k3/4b3/8/8/6P1/5P2/3PP3/3QKB2 b - -", "e7h4"},
      {"4k3/4b3/8/8/6P1/5P2/3PP3/3QK3 b - -", ""},
      {"4k3/4b3/8/8/4N1P1/5P2/3PP3/3QKB2 b - -", ""},
      // Pinned pieces neither move nor mate.
      {"6k1/5ppp/8/8/8/r2R2K1/8/8 w - -", ""},
      {"6k1/5ppp/8/8/8/3R2K1/8/8 w - -", "d3d8"},
      // A rook in contact may shut the line of its defender on the edge only.
      {"1R6/8/2B5/8/1N3K2/8/7k/1RR5 w - -", "c1h1"},
      {"8/8/8/6Q1/R7/5k2/2K5/4Q3 w - -", ""},
      // On diagonals a bishop may not rely on a rook or queen, a queen may.
      {"8/6B1/Q7/B2B4/1R2N3/k4P2/8/K7 w - -", ""},
      {"1n1k4/8/4Q3/8/8/Q2K4/6NQ/4N3 w - -", "a3e7"},
      // A pawn steps in beside its king, on a rank and on a diagonal.
      {"2r4Q/8/8/4P3/8/3K4/4p3/3k4 w - -", ""},
      {"8/1Q4b1/6K1/1P1r1B2/4Q3/6p1/7Q/5k2 w - -", ""},
      // On a diagonal one knight is no parry, unless it is beside its king or shields the other.
      {"8/8/8/7K/8/6B1/p3n3/kb6 w - -", "g3e5"},
      {"8/8/8/7K/8/6B1/p3n3/kb1b4 w - -", ""},
      {"4Q3/4K3/8/8/1Q5B/8/n2p1P2/k7 w - -", ""},
      // A careless FEN leaves the king in check already, along a file and along a diagonal; a king
      // is never captured.
      {"8/7r/8/8/k6r/8/6P1/5RBK b - -", ""},
      {"8/kq6/8/8/4b3/8/7P/6RK b - -", ""},
  };
  for (const auto& c : cases) {
    Board board = boardOf(c.fen);
    const Move mate = *c.mate == '\0' ? NoMove : moveOf(board, c.mate);
    EXPECT_EQ(findMateInOne(board, board.stm ^ 1), mate) << c.fen;
  }
}

// The patterns are no proof of mate: a distant check may be parried by an interposition that they
// count as too weak. Nothing else may answer a reported move.
TEST(MateInOneSlow, OnlyInterpositionsAnswerWhatItReports) {
  RandomPositions positions(17);
  int reported = 0;
  int mates = 0;
  for (int i = 0; i < PropertyPositions; ++i) {
    Board& board = positions.next();
    const Move move = findMateInOne(board, board.stm ^ 1);
    if (move == NoMove || !isLegalMove(board, move)) continue;
    const std::string before = describe(board);
    const UndoInfo undo = board;
    makeMove(board, move);
    updateAttackInfo(board);
    EXPECT_TRUE(board.isInCheck()) << before << std::hex << " move " << move;
    const Square king = board.own().kingSquare;
    const std::vector<Move> answers = legalMovesOf(board);
    for (const Move answer : answers) {
      EXPECT_TRUE(fromOf(answer) != king && !isCapture(answer) &&
                  contains(between[toOf(move)][king], toOf(answer)))
          << before << std::hex << " move " << move << " is answered by " << answer;
    }
    ++reported;
    mates += answers.empty() ? 1 : 0;
    unmakeMove(board, move, undo);
  }
  EXPECT_GT(mates * 10, reported * 8);
}

}  // namespace
}  // namespace quill::test
