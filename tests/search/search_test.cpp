#include "search/search.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "board/movegen.h"
#include "eval/evaluate.h"
#include "search/draw.h"
#include "search/line_walk.h"
#include "support/mates.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/random_positions.h"
#include "support/search_kit.h"
#include "support/slow_rules.h"

namespace quill {
namespace {

using test::describe;
using test::effort;
using test::moveOf;

constexpr unsigned ZeroWindow = CutNode | NullOk;

class SearchTest : public testing::Test {
 protected:
  void play(const std::string& moves) { test::playMoves(kit.board(), moves); }

  int scoreOf(const std::string& fen, int ply, int depth) {
    kit.setPosition(fen);
    return kit.scoreAt(ply, depth);
  }

  bool isDraw(int ply, int beta = 1) { return isDrawByRule(kit.worker(), ply, beta); }

  test::SearchKit kit;
};

TEST_F(SearchTest, MateInOneIsSeenFromEveryKindOfNode) {
  constexpr char Fen[] = "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -";
  for (int depth = 0; depth <= 3; ++depth) {
    kit.clear();
    EXPECT_EQ(scoreOf(Fen, 1, depth), 30000 - 2) << depth;
  }
  for (const unsigned flags : {CutNode | NullOk, AllNode | NullOk}) {
    kit.clear();
    EXPECT_EQ(kit.scoreAt(1, 2, 5000, 5001, flags), 30000 - 2);
  }
}

TEST_F(SearchTest, PositionSeenBeforeIsADrawInsideTheTree) {
  kit.setPosition(test::StartFen);
  play("g1f3 g8f6 f3g1 f6g8");
  EXPECT_TRUE(isDraw(3));
  EXPECT_FALSE(isDraw(2)) << "near the root it takes two";
  EXPECT_FALSE(isDraw(1));
  play("b1c3 b8c6 c3b1 c6b8");
  EXPECT_TRUE(isDraw(2));
  EXPECT_TRUE(isDraw(1));
}

TEST_F(SearchTest, PositionsBeforeAPawnMoveAreNotCompared) {
  kit.setPosition(test::StartFen);
  play("g1f3 g8f6 f3g1 f6g8 e2e4");
  EXPECT_FALSE(isDraw(3));
  play("b8c6 b1c3 c6b8 c3b1");
  EXPECT_TRUE(isDraw(3)) << "the position right after the pawn move counts";
}

TEST_F(SearchTest, OpponentThatWentBackLetsUsRepeat) {
  kit.setPosition(test::StartFen);
  play("g1f3 g8f6 f3g1");
  Worker& worker = kit.worker();
  EXPECT_FALSE(isDraw(3, 1)) << "a draw is less than beta";
  EXPECT_FALSE(isDraw(2, 0));
  EXPECT_TRUE(isDraw(3, 0));
  EXPECT_EQ(test::SearchKit::uciText(worker.pv[3][0]), "f6g8");
  EXPECT_EQ(worker.pv[3][1], NoMove);
}

TEST_F(SearchTest, NoRepeatThroughThePieceThatWentBackOrByCastling) {
  kit.setPosition("3r2k1/8/8/8/3R4/8/8/6K1 w - -");
  play("d4e4 d8d2 e4d4");
  EXPECT_FALSE(isDraw(3, 0)) << "the way back is barred";
  kit.setPosition("4k2r/8/8/8/8/8/8/R3K3 w k -");
  play("a1b1 e8g8 b1a1");
  EXPECT_FALSE(isDraw(3, 0));
}

TEST_F(SearchTest, FiftyMovesDrawEvenTheMated) {
  EXPECT_EQ(scoreOf("7k/5Q2/6K1/8/8/8/8/8 b - -", 3, 4), 0) << "stalemate";
  kit.setPosition("7k/6Q1/6K1/8/8/8/8/8 b - -");
  kit.board().lastIrreversible = kit.board().ply - 99;
  EXPECT_EQ(kit.scoreAt(3, 4), -29997);
  EXPECT_EQ(kit.quietScoreAt(9, 2), -29991);
  kit.board().lastIrreversible = kit.board().ply - 100;
  EXPECT_EQ(kit.scoreAt(3, 4), 0);
  EXPECT_EQ(kit.quietScoreAt(3, 2), 0);
}

TEST_F(SearchTest, AMinorPieceOnEachSideIsNotEnough) {
  const struct {
    const char* fen;
    bool isDraw;
  } cases[] = {
      {"4k3/8/8/8/8/8/8/4K3 w - -", true},   {"4k3/8/8/8/8/8/8/3BK3 w - -", true},
      {"3nk3/8/8/8/8/8/8/3BK3 b - -", true}, {"4k3/8/8/8/8/8/8/2NNK3 w - -", false},
      {"4k3/8/8/8/8/8/P7/4K3 w - -", false}, {"4k3/8/8/8/8/8/8/R3K3 b - -", false},
      {"4k3/q7/8/8/8/8/8/4K3 w - -", false}, {"4k3/p7/8/8/8/8/8/3BK3 w - -", false},
  };
  for (const auto& [fen, expected] : cases) {
    kit.setPosition(fen);
    EXPECT_EQ(isDraw(1), expected) << fen;
  }
}

TEST_F(SearchTest, DeepestNodesAndThoseThatCannotMateSoonerAreNotSearched) {
  kit.setPosition(test::KiwipeteFen);
  const int eval = evaluate(kit.worker().evaluator);
  EXPECT_EQ(kit.scoreAt(120, 9), eval);
  EXPECT_EQ(kit.quietScoreAt(120, 2), eval);
  EXPECT_EQ(kit.scoreAt(10, 9, 29989, 29990, ZeroWindow), 29989);
  EXPECT_EQ(kit.scoreAt(10, 9, -29990, -29988, ZeroWindow), -29988);
  EXPECT_EQ(kit.worker().stats.searched(), 4u);
}

TEST_F(SearchTest, TableCutsOffOnlyZeroWindowNodesOfItsDepth) {
  constexpr int StaticLower = LowerBound | StaticCut;
  const struct {
    int bound, depth, score;
    unsigned flags;
    bool isCut;
  } cases[] = {
      {ExactBound, 4, -700, ZeroWindow, true},
      {LowerBound, 9, 101, AllNode | NullOk, true},
      {UpperBound, 4, 100, ZeroWindow, true},
      {ExactBound, 3, -700, ZeroWindow, false},
      // Bounds on the wrong side.
      {LowerBound, 4, 100, ZeroWindow, false},
      {UpperBound, 4, 101, ZeroWindow, false},
      {ExactBound, 4, -700, PvNode, false},
      // A static cut needs a node that may pass the turn: no move was searched for it.
      {StaticLower, 4, 500, ZeroWindow, true},
      {StaticLower, 4, 500, CutNode, false},
      // A proved win or loss counts whatever its depth, but not against its bound.
      {LowerBound, 1, 10000, ZeroWindow, true},
      {UpperBound, 1, -10000, ZeroWindow, true},
      {UpperBound, 1, 10000, ZeroWindow, false},
      {ExactBound, 1, 9999, ZeroWindow, false},
  };
  kit.setPosition(test::QuietFen);
  const Move move = moveOf(kit.board(), "c4a2");
  for (const auto& c : cases) {
    kit.tt.clear();
    kit.worker().stats.reset();
    kit.tt.storeScore(kit.worker(), c.bound, c.depth, 1, c.score, move, 0);
    const int score = kit.scoreAt(1, 4, 100, 101, c.flags);
    EXPECT_EQ(score == c.score && kit.worker().stats.searched() == 1, c.isCut)
        << "case " << &c - cases;
  }
}

// Wherever a search is stopped, the board is as it was, nothing is stored on the way up and the
// whole search is told to end.
TEST_F(SearchTest, LimitStopsAnywhereAndLeavesTheBoardAsItWas) {
  for (const char* fen : {test::KiwipeteFen, test::RookEndingFen, test::PromotionFen}) {
    for (unsigned limit = 1; limit < 40'000; limit += effort(1777, 7777)) {
      kit.setPosition(fen);
      kit.clear();
      kit.worker().stats.reset();
      kit.worker().stop = false;
      kit.state().rootStop = false;
      kit.timeControl.configure({.nodes = limit});
      const Board before(kit.board());
      EXPECT_EQ(kit.scoreAt(1, 30), 0) << fen;
      EXPECT_EQ(test::difference(kit.board(), before), "") << fen << " after " << limit;
      EXPECT_TRUE(kit.state().rootStop);
      // The main search looks every 256 of its own nodes, quiescence every 4096.
      EXPECT_LT(kit.worker().stats.searched(), limit + 3 * 4096) << fen;
      TtEntry entry;
      EXPECT_FALSE(kit.tt.probe(kit.worker(), entry) && entry.depth == 30) << fen;
    }
  }
}

TEST_F(SearchTest, RandomPositionsKeepTheBoardAndTheScale) {
  test::RandomPositions random(20260301);
  Worker& worker = kit.worker();
  for (int i = 0; i < effort(4000, 300); ++i) {
    Board& position = random.next();
    kit.board().copyFrom(position);
    const int ply = 1 + static_cast<int>(random.below(8));
    const int depth = static_cast<int>(random.below(4));
    const bool isPv = random.below(2) == 0;
    const int low = isPv ? -30000 : static_cast<int>(random.below(800)) - 400;
    const int high = isPv ? 30000 : low + 1;
    const unsigned flags = isPv ? unsigned{PvNode} : random.below(2) == 0 ? ZeroWindow : AllNode;
    const int score = kit.scoreAt(ply, depth, low, high, flags);
    ASSERT_LE(std::abs(score), 30000) << describe(position);
    ASSERT_EQ(test::difference(kit.board(), position), "") << describe(position);
    // Whatever line is left is one that can be played.
    LineWalk walk(kit.board());
    for (const Move* move = worker.pv[ply].data(); *move != NoMove; ++move) {
      ASSERT_TRUE(isLegalMove(kit.board(), *move)) << describe(position);
      walk.play(*move);
    }
  }
}

// Whether the side to move mates in so many moves, by trying everything.
bool canMate(Board& board, int moves) {
  for (const Move move : test::legalMovesOf(board)) {
    LineWalk walk(board);
    walk.play(move);
    if (moves == 1 && !board.isInCheck()) continue;
    const std::vector<Move> replies = test::legalMovesOf(board);
    if (replies.empty() ? board.isInCheck()
                        : moves > 1 && std::all_of(replies.begin(), replies.end(), [&](Move reply) {
                            LineWalk deeper(board);
                            deeper.play(reply);
                            return canMate(board, moves - 1);
                          })) {
      return true;
    }
  }
  return false;
}

TEST_F(SearchTest, MatesAreTrueAndNoneInTwoIsMissed) {
  test::RandomPositions random(20260302);
  int mates[3] = {};
  for (int i = 0; i < effort(2000, 150); ++i) {
    for (int skip = 0; skip < 5; ++skip) random.next();
    Board& position = random.next();
    if (test::legalMovesOf(position).empty() || count(position.occupied) > 16) continue;
    kit.board().copyFrom(position);
    kit.clear();
    const int score = kit.scoreAt(1, 4);
    const int moves = canMate(position, 1) ? 1 : canMate(position, 2) ? 2 : 0;
    if (moves != 0 && position.quietPlies() < 90) {
      EXPECT_EQ(score, 30000 - 2 * moves) << describe(position);
    }
    // One ply below the root, mate in n moves is 2n plies away.
    if (score >= 30000 - 4) {
      EXPECT_EQ(moves, (30000 - score) / 2) << describe(position);
    }
    ++mates[moves];
  }
  EXPECT_GE(mates[1], effort(15, 1)) << "too few mates met to say anything";
  EXPECT_GE(mates[2], effort(15, 0));
}

TEST(SearchMates, ForcedMatesAreFoundInTime) {
  test::SearchKit kit(1);
  for (const test::ForcedMate& mate : test::ForcedMates) {
    kit.setPosition(mate.fen);
    kit.clear();
    EXPECT_EQ(kit.think(mate.depth()), mate.score()) << mate.fen;
  }
}

}  // namespace
}  // namespace quill
