#include "smp/split.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <memory>
#include <numeric>
#include <string>

#include "board/movegen.h"
#include "search/line_walk.h"
#include "support/mates.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/search_kit.h"

namespace quill {
namespace {

using test::effort;
using test::SearchKit;

std::uint32_t splitsOf(const ThreadPool& pool) {
  std::uint32_t sum = 0;
  for (const auto& worker : pool.workers) sum += worker->splits;
  return sum;
}

std::uint32_t joinsOf(const ThreadPool& pool) {
  std::uint32_t sum = 0;
  for (const auto& worker : pool.workers) sum += worker->joins;
  return sum;
}

TEST(SplitPoint, OneThreadNeverSplits) {
  SearchKit kit(1);
  kit.setPosition(test::KiwipeteFen);
  kit.think(6);
  EXPECT_EQ(splitsOf(kit.pool), 0u);
  EXPECT_EQ(kit.state().idleCount, 0);
}

TEST(SplitPoint, SplittingTakesAnIdleThreadAndAFreeRecord) {
  SearchKit kit;
  Worker& worker = kit.worker();
  EXPECT_FALSE(canSplit(worker));
  kit.state().idleCount = 1;
  EXPECT_TRUE(canSplit(worker));
  worker.splitsInUse = MaxSplitPoints - 1;
  EXPECT_TRUE(canSplit(worker));
  worker.splitsInUse = MaxSplitPoints;
  EXPECT_FALSE(canSplit(worker));
  worker.splitsInUse = 0;
  // Below 0 while another thread is handing its split point out.
  kit.state().idleCount = 1 - 100;
  EXPECT_FALSE(canSplit(worker));
}

// A node whose moves nobody comes for is as it was.
TEST(SplitPoint, SplitIsUndoneWhenNobodyComes) {
  SearchKit kit;
  kit.setPosition(test::QuietFen);
  Worker& worker = kit.worker();
  makeMove(kit.board(), test::moveOf(kit.board(), "c4a2"));
  updateAttackInfo(kit.board());
  const std::vector<Move> moves = test::legalMovesOf(kit.board());
  const std::vector<int> threats(moves.size(), 0);
  NodeParams node{};
  node.ply = 1;
  node.depth = 3;
  node.beta = 100;
  const SplitRequest request{node,
                             99,
                             50,
                             moves[0],
                             NoMove,
                             moves.data() + 1,
                             threats.data(),
                             static_cast<int>(moves.size()) - 1,
                             5};
  kit.state().idleCount = 1;
  EXPECT_FALSE(trySplit(worker, request).has_value()) << "no thread is available";
  worker.stop = true;
  EXPECT_FALSE(trySplit(worker, request).has_value()) << "the search is being stopped";
  EXPECT_EQ(worker.splitsInUse, 0);
  EXPECT_EQ(worker.currentSplit, nullptr);
  EXPECT_EQ(worker.splits, 0u);
  EXPECT_FALSE(worker.spinLock.isHeld());
  EXPECT_EQ(kit.state().idleCount, 1);
  EXPECT_EQ(worker.stats.searched(), 0u);
}

TEST(SplitPoint, ThreadsShareTheWork) {
  SearchKit kit(4);
  kit.setPosition(test::KiwipeteFen);
  kit.think(effort(9, 7));
  EXPECT_GT(splitsOf(kit.pool), 0u);
  EXPECT_GE(joinsOf(kit.pool), splitsOf(kit.pool)) << "a split point has at least one helper";
  for (int i = 0; i < 4; ++i) EXPECT_GT(kit.pool.workers[i]->stats.searched(), 0u) << i;
}

// What one thread proves several threads find as well, at the same depth. Their tables differ from
// run to run, so that a mate may come a move later; it may not be lost.
void findMates(int threads, int rounds) {
  SearchKit kit(threads);
  for (int round = 0; round < rounds; ++round) {
    for (const test::ForcedMate& mate : test::ForcedMates) {
      kit.setPosition(mate.fen);
      kit.clear();
      const int score = kit.think(mate.depth());
      EXPECT_GE(score, 29900) << mate.fen;
      EXPECT_LE(score, mate.score()) << mate.fen << ": there is no shorter mate";
      // The line leads to the mate, or as far as the table knows it.
      LineWalk walk(kit.board());
      for (const Move* line = kit.rootMoves().lineAt(0); *line != NoMove; ++line) {
        ASSERT_TRUE(isLegalMove(kit.board(), *line)) << mate.fen;
        walk.play(*line);
      }
    }
  }
}

TEST(SplitPoint, MatesAreFoundByTwoThreads) { findMates(2, effort(3, 1)); }
TEST(SplitPoint, MatesAreFoundByFourThreads) { findMates(4, effort(3, 1)); }

// Many threads on few processors: every wait is long, every order of events comes up.
TEST(SplitPointSlow, SixteenThreadsFindTheMates) { findMates(16, effort(5, 1)); }

// Two hundred positions of random games in which one thread finds a mate for either side within six
// plies: several threads find one at that depth too.
TEST(SplitPointSlow, MatesOfRandomGamesAreFoundByTwoAndFourThreads) {
  constexpr int Depth = 6;
  constexpr int MateBound = 29000;
  std::ifstream file(QUILL_TEST_DATA "/mates.txt");
  std::array<std::unique_ptr<SearchKit>, 3> kits;
  for (std::size_t i = 0; i < kits.size(); ++i) kits[i] = std::make_unique<SearchKit>(1 << i);
  int positions = 0;
  for (std::string fen; positions < effort(200, 25) && std::getline(file, fen); ++positions) {
    for (const auto& kit : kits) {
      kit->setPosition(fen);
      kit->clear();
      EXPECT_GE(std::abs(kit->think(Depth)), MateBound)
          << fen << " with " << kit->pool.threadCount() << " threads";
    }
  }
  EXPECT_EQ(positions, effort(200, 25));
}

TEST(SplitPointSlow, ThreadsAgreeWithOneOnQuietPositions) {
  SearchKit one(1);
  SearchKit many(4);
  for (const char* fen : test::VariedFens) {
    one.setPosition(fen);
    many.setPosition(fen);
    const int depth = effort(7, 5);
    const int expected = one.think(depth);
    const int score = many.think(depth);
    // Searches with a shared table are not equal; but none may be far off.
    const bool isDecisive = std::abs(expected) > 1000;
    EXPECT_TRUE(isDecisive ? score * expected > 0 && std::abs(score) > 500
                           : std::abs(score - expected) < 300)
        << fen << ": " << expected << " by one thread, " << score << " by four";
  }
}

// Node limits end the whole search whichever thread meets them, often in the middle of a split.
TEST(SplitPointSlow, NodeLimitOfAnyThreadEndsTheSearch) {
  SearchKit kit(4);
  for (int i = 0; i < effort(300, 40); ++i) {
    kit.setPosition(test::VariedFens[static_cast<std::size_t>(i) % 6]);
    const auto limit = static_cast<unsigned>(2000 + i * 37);
    kit.limits.nodes = limit;
    kit.think(0);
    ASSERT_TRUE(isLegalMove(kit.board(), kit.rootMoves().bestMove())) << i;
    for (int w = 0; w < 4; ++w) {
      ASSERT_LT(kit.pool.workers[w]->stats.searched(), limit + 3 * 4096) << i;
    }
  }
}

}  // namespace
}  // namespace quill
