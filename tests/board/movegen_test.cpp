#include "board/movegen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "support/play.h"
#include "support/random_positions.h"
#include "support/reference.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

std::vector<Move> sorted(std::vector<Move> moves) {
  std::sort(moves.begin(), moves.end());
  return moves;
}

TEST(MoveGen, OrderOfMovesIsTheReferenceOrder) {
  forEachReference([](Board& board, const auto& reference) {
    EXPECT_EQ(legalMovesOf(board), movesIn(reference["bits"]));
    if (board.isInCheck()) return;
    EXPECT_EQ(capturesOf(board), movesIn(reference["captures"]));
  });
}

TEST(MoveGen, CapturesOfACheckerPromoteInAnOrderOfTheirOwn) {
  Board board = boardOf("3rk3/4P3/8/8/8/8/2P1P3/2RKR3 w - -");
  std::vector<int> types;
  for (const Move move : legalMovesOf(board)) types.push_back(promotionOf(move));
  EXPECT_EQ(types, (std::vector<int>{Queen, Knight, Rook, Bishop}));
}

// The count, on a board whose attack information is wrong: it must not be used.
int countOnStaleBoard(const Board& board) {
  Board stale = board;
  stale.enemyAttacks = ~board.enemyAttacks;
  stale.blockers = {~board.blockers[White], ~board.blockers[Black]};
  return countLegal(stale);
}

// Positions in which a rule decides that random games seldom meet.
constexpr const char* EdgeFens[] = {
    // En passant that opens the king along the rank, along a diagonal, through the captured pawn.
    "8/8/8/K2pP2r/8/8/8/7k w - d6",
    "7k/1b6/8/3pP3/4K3/8/8/8 w - d6",
    "6bk/8/8/3pP3/8/8/K7/8 w - d6",
    // A pawn pinned along the very diagonal on which it captures en passant.
    "5b1k/8/8/3pP3/8/8/8/K7 w - d6",
    // A double step into a double check, and one whose check en passant answers.
    "7k/8/8/2pPp3/3K4/8/8/8 w - c6",
    "7k/8/3b4/1PpP4/3K4/8/8/8 w - c6",
    // Castling: free for either side, past attacks on the rook's way, the king's ways and the king,
    // obstructed, without the right.
    "r3k2r/8/8/8/8/8/8/R3K2R w KQkq -",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq -",
    "4k3/8/8/8/8/1r6/8/R3K2R w KQ -",
    "4k3/8/8/8/8/3r4/8/R3K2R w KQ -",
    "4k3/8/8/8/8/6r1/8/R3K2R w KQ -",
    "4k3/8/8/8/8/4r3/8/R3K2R w KQ -",
    "4k3/8/8/8/8/8/8/RN2K1NR w KQ -",
    "4k3/8/8/8/8/8/8/R3K2R w K -",
    // Double checks, and kings side by side.
    "4k3/8/8/8/4r3/5n2/3Q4/3RK1NR w - -",
    "4r2k/8/8/8/8/3n4/3P1Q2/3RK1NR w - -",
    "8/8/8/8/1Q3Q2/8/8/kK5R w - -",
    // Mate and stalemates.
    "rnb1kbnr/pppp1ppp/8/4p3/6Pq/5P2/PPPPP2P/RNBQKBNR w KQkq -",
    "7k/5Q2/6K1/8/8/8/8/8 b - -",
    "8/8/8/8/8/5k2/5p2/5K2 w - -",
    // The most moves that any position has.
    "R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - -",
};

TEST(MoveGen, EdgePositionsAgreeWithTheSlowRules) {
  for (const char* fen : EdgeFens) {
    Board board = boardOf(fen);
    const std::vector<Move> expected = slowLegalMoves(board);
    EXPECT_EQ(sorted(legalMovesOf(board)), expected) << fen;
    EXPECT_EQ(countOnStaleBoard(board), std::ssize(expected)) << fen;
  }
}

TEST(MoveGen, ClaimedEnPassantWithoutItsPawnIsIgnored) {
  const char* const claims[] = {
      "7k/8/8/4P3/8/8/8/K7 w - d6",     // no pawn at all
      "7k/8/3n4/3pP3/8/8/8/K7 w - d6",  // it can't have come through a piece
      "7k/3n4/8/3pP3/8/8/8/K7 w - d6",  // nor from below one
      "7k/8/8/3PP3/8/8/8/K7 w - d6",    // own pawn
      "7k/8/8/3nP3/8/8/8/K7 w - d6",    // no pawn but a knight
      "7k/8/8/8/3pP3/8/8/K7 b - d4",    // the mover's own double step
      "7k/8/3pP3/8/8/8/8/K7 w - d7",    // a rank where none can arrive
      "7k/8/8/8/8/8/8/K7 w - h8",       // the end of the board
  };
  for (const char* fen : claims) {
    Board board = boardOf(fen);
    EXPECT_EQ(usableEpSquare(board), 0) << fen;
    for (const Move move : legalMovesOf(board)) EXPECT_FALSE(isEnPassant(move)) << fen;
  }
}

TEST(MoveGen, GeneratorsAgreeWithTheSlowRules) {
  RandomPositions positions(20261122);
  for (int i = 0; i < PropertyPositions; ++i) {
    Board& board = positions.next();
    const std::vector<Move> legal = legalMovesOf(board);
    ASSERT_EQ(sorted(legal), slowLegalMoves(board)) << describe(board);
    ASSERT_EQ(countOnStaleBoard(board), std::ssize(legal)) << describe(board);
    if (board.isInCheck()) continue;
    const Bitboard enemies = board.enemy().bb[0];
    const Bitboard some = enemies & (Bitboard{positions.bits()} << 32 | positions.bits());
    for (const Bitboard targets : {enemies, some}) {
      ASSERT_EQ(sorted(capturesOf(board, targets)), slowCaptures(board, targets))
          << describe(board) << " targets " << targets;
    }
  }
}

// Asked about the legal moves, each of them with one bit changed, and every pair of squares with
// what stands there: without flags, and with some.
TEST(IsLegalMove, SaysTrueExactlyForGeneratedMoves) {
  RandomPositions positions(31);
  for (int i = 0; i < PropertyPositions / 50; ++i) {
    Board& board = positions.next();
    const std::vector<Move> legal = legalMovesOf(board);
    std::vector<Move> doubtful = legal;
    for (const Move move : legal) {
      for (int n = 0; n < 32; ++n) doubtful.push_back(move ^ (1u << n));
    }
    for (Square from = 0; from < 64; ++from) {
      for (Square to = 0; to < 64; ++to) {
        const Move move = makeCapture(from, to, board.squares[static_cast<unsigned>(to)]);
        doubtful.push_back(move);
        doubtful.push_back(move | positions.below(64) << 24);
      }
    }
    for (const Move move : doubtful) {
      ASSERT_EQ(isLegalMove(board, move), isOneOf(legal, move))
          << describe(board) << std::hex << " move " << move;
    }
  }
}

}  // namespace
}  // namespace quill::test
