#include "board/movegen.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "board/notation.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/random_positions.h"
#include "support/reference.h"
#include "support/slow_rules.h"

namespace quill {
namespace {

using test::boardOf;
using test::describe;
using test::legalMovesOf;
using test::PropertyPositions;
using test::RandomPositions;

std::vector<Move> captures(const Board& board, Bitboard targets) {
  Move list[MaxMoves];
  return {list, generateCaptures(board, list, targets)};
}

std::vector<Move> sorted(std::vector<Move> moves) {
  std::sort(moves.begin(), moves.end());
  return moves;
}

std::string legalTexts(const char* fen) {
  Board board = boardOf(fen);
  std::string all;
  for (const Move move : legalMovesOf(board)) {
    char text[MoveTextSize];
    moveToText(board, text, move);
    if (!all.empty()) all += ' ';
    all += text;
  }
  return all;
}

bool isGenerated(const std::vector<Move>& moves, Move move) {
  return std::any_of(moves.begin(), moves.end(), [move](Move m) { return isSameMove(m, move); });
}

TEST(MoveGen, OrderOfMovesIsTheReferenceOrder) {
  for (const auto& position : test::referencePositions()) {
    const auto fen = position["fen"].get<std::string>();
    Board board = boardOf(fen);
    EXPECT_EQ(legalMovesOf(board), test::movesIn(position["bits"])) << fen;
    if (board.isInCheck()) continue;
    EXPECT_EQ(captures(board, board.enemy().bb[0]), test::movesIn(position["captures"])) << fen;
  }
}

TEST(MoveGen, PromotionsComeInTheirOrders) {
  EXPECT_EQ(
      legalTexts("4r1k1/3P4/8/8/8/8/PP6/K7 w - -"),
      "d7xe8=Q d7xe8=N d7xe8=B d7xe8=R d7d8=Q d7d8=N d7d8=B d7d8=R a2a4 b2b4 a2a3 b2b3 Ka1b1");
  // The capture of a checker has an order of its own.
  EXPECT_EQ(legalTexts("3rk3/4P3/8/8/8/8/2P1P3/2RKR3 w - -"), "e7xd8=Q e7xd8=N e7xd8=R e7xd8=B");
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
};

TEST(MoveGen, EdgePositionsAgreeWithTheSlowRules) {
  for (const char* fen : EdgeFens) {
    Board board = boardOf(fen);
    EXPECT_EQ(sorted(legalMovesOf(board)), test::slowLegalMoves(board)) << fen;
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

TEST(MoveGen, TheRichestPositionFitsTheList) {
  Board board = boardOf("R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - -");
  EXPECT_EQ(legalMovesOf(board).size(), 218u);
}

TEST(MoveGen, GeneratorsAgreeWithTheSlowRules) {
  RandomPositions positions(20261122);
  for (int i = 0; i < PropertyPositions; ++i) {
    Board& board = positions.next();
    const std::vector<Move> legal = legalMovesOf(board);
    ASSERT_EQ(sorted(legal), test::slowLegalMoves(board)) << describe(board);
    if (board.isInCheck()) continue;
    const Bitboard enemies = board.enemy().bb[0];
    const Bitboard some = enemies & (Bitboard{positions.bits()} << 32 | positions.bits());
    for (const Bitboard targets : {enemies, some}) {
      ASSERT_EQ(sorted(captures(board, targets)), test::slowCaptures(board, targets))
          << describe(board) << " targets " << targets;
    }
  }
}

// A legal move, or one that looks legal: some bits are changed, or it is from another position.
Move doubtfulMove(RandomPositions& positions, const std::vector<Move>& legal, Move earlier) {
  const Move base =
      legal.empty() ? earlier : legal[positions.below(static_cast<std::uint32_t>(legal.size()))];
  switch (positions.below(6)) {
    case 0:
      return positions.bits();
    case 1:
      return base ^ (1u << positions.below(32));
    case 2:
      return base ^ (1u << positions.below(32)) ^ (1u << positions.below(32));
    case 3:  // any two squares, with what stands there
      return (positions.bits() & 0x3F3F) | (base & ~Move{0xFFFF});
    case 4:
      return (base & ~Move{0xFF}) | (positions.bits() & 0x3F);
    default:
      return earlier;
  }
}

TEST(IsLegalMove, SaysTrueExactlyForGeneratedMoves) {
  RandomPositions positions(31);
  std::vector<Move> recent = {makeQuiet(E2, E4)};
  for (int i = 0; i < PropertyPositions; ++i) {
    Board& board = positions.next();
    const std::vector<Move> legal = legalMovesOf(board);
    for (const Move move : legal) {
      ASSERT_TRUE(isLegalMove(board, move)) << describe(board) << std::hex << " move " << move;
      ASSERT_TRUE(isLegalMove(board, move | MarkFlag)) << describe(board);
      if (positions.below(64) == 0) recent.push_back(move);
    }
    if (recent.size() > 5000) recent.erase(recent.begin(), recent.begin() + 2500);
    for (int k = 0; k < 60; ++k) {
      const Move move = doubtfulMove(
          positions, legal, recent[positions.below(static_cast<std::uint32_t>(recent.size()))]);
      ASSERT_EQ(isLegalMove(board, move), isGenerated(legal, move))
          << describe(board) << std::hex << " move " << move;
    }
  }
}

TEST(IsLegalMove, EveryPairOfSquaresWithEveryFlagIsJudgedRight) {
  for (const char* fen : test::VariedFens) {
    Board board = boardOf(fen);
    const std::vector<Move> legal = legalMovesOf(board);
    for (Square from = 0; from < 64; ++from) {
      for (Square to = 0; to < 64; ++to) {
        const Move base = makeCapture(from, to, board.squares[static_cast<unsigned>(to)]);
        for (Move flags = 0; flags < 64; ++flags) {
          const Move move = base | flags << 24;
          ASSERT_EQ(isLegalMove(board, move), isGenerated(legal, move))
              << fen << std::hex << " move " << move;
        }
      }
    }
  }
}

}  // namespace
}  // namespace quill
