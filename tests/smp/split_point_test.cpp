#include "smp/split.h"

#include <gtest/gtest.h>

#include <array>
#include <fstream>
#include <memory>
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

TEST(SplitPoint, SplittingTakesAnIdleThreadAndAFreeRecord) {
  SearchKit kit;
  Worker& worker = kit.worker();
  const struct {
    int idle, splitsInUse;
    bool can;
  } cases[] = {{0, 0, false},
               {1, MaxSplitPoints - 1, true},
               {1, MaxSplitPoints, false},
               // Below 0 while another thread is handing its split point out.
               {1 - 100, 0, false}};
  for (const auto& [idle, splitsInUse, can] : cases) {
    kit.state().idleCount = idle;
    worker.splitsInUse = splitsInUse;
    EXPECT_EQ(canSplit(worker), can) << idle << ' ' << splitsInUse;
  }
}

// An owner that waits for its helpers can only be had by those who work below it.
TEST(SplitPoint, SplittingTakesAnOwnerOnlyFromBelow) {
  SearchKit kit;
  Worker& worker = kit.worker();
  SplitPoint above;
  SplitPoint below;
  below.parent = &above;
  kit.state().idleCount = 1;
  kit.state().waitingOwners = 1;
  above.ownerWaits = true;
  EXPECT_FALSE(canSplit(worker)) << "works nowhere";
  worker.currentSplit = &below;
  EXPECT_TRUE(canSplit(worker));
  above.ownerWaits = false;
  EXPECT_FALSE(canSplit(worker)) << "the owner waits elsewhere";
  worker.currentSplit = nullptr;
}

// Whoever was given a split point and has not begun is free again when its owner takes it back, or
// when it finds no move left there.
TEST(SplitPoint, LateHelpersAreFreeAgain) {
  SearchKit kit(2);
  kit.setPosition(test::QuietFen);
  Worker& owner = kit.worker();
  Worker& helper = *kit.pool.workers[1];
  const NodeParams node{};
  const auto expectFree = [&](const SplitPoint& split) {
    EXPECT_EQ(split.workers, 0);
    EXPECT_EQ(helper.currentSplit, nullptr);
    EXPECT_TRUE(helper.available);
    EXPECT_EQ(kit.state().idleCount, 1);
  };
  findWork(helper);
  for (const bool isTakenBack : {true, false}) {
    SplitPoint* const split = trySplit(owner, node, 1);
    ASSERT_NE(split, nullptr);
    EXPECT_EQ(helper.currentSplit, split);
    EXPECT_EQ(split->workers, 1);
    EXPECT_EQ(kit.state().idleCount, 0);
    EXPECT_EQ(joinAssigned(helper), nullptr) << "its moves are not there yet";
    EXPECT_EQ(helper.currentSplit, split);
    if (isTakenBack) {
      takeBack(owner, *split);
    } else {
      split->moveCount = 0;
      split->stage = SplitReady;
      EXPECT_EQ(joinAssigned(helper), nullptr) << "it has no move left";
    }
    expectFree(*split);
    owner.splitsInUse = 0;
    owner.currentSplit = nullptr;
  }
  stopWaiting(helper, nullptr);
  EXPECT_FALSE(helper.available);
  EXPECT_EQ(kit.state().idleCount, 0);
  EXPECT_EQ(helper.joins, 0u);
  EXPECT_EQ(helper.drops, 2u);
}

// A node whose moves nobody comes for is as it was.
TEST(SplitPoint, SplitIsUndoneWhenNobodyComes) {
  SearchKit kit;
  kit.setPosition(test::QuietFen);
  Worker& worker = kit.worker();
  const NodeParams node{};
  kit.state().idleCount = 1;
  EXPECT_EQ(trySplit(worker, node, 4), nullptr) << "no thread is available";
  worker.stop = true;
  EXPECT_EQ(trySplit(worker, node, 4), nullptr) << "the search is being stopped";
  EXPECT_EQ(worker.splitsInUse, 0);
  EXPECT_EQ(worker.currentSplit, nullptr);
  EXPECT_EQ(worker.splits, 0u);
  EXPECT_FALSE(worker.spinLock.isHeld());
}

TEST(SplitPoint, ThreadsShareTheWork) {
  SearchKit kit(4);
  kit.setPosition(test::KiwipeteFen);
  kit.think(effort(9, 7));
  std::uint32_t splits = 0;
  std::uint32_t joins = 0;
  std::uint32_t drops = 0;
  for (int i = 0; i < 4; ++i) {
    splits += kit.pool.workers[i]->splits;
    joins += kit.pool.workers[i]->joins;
    drops += kit.pool.workers[i]->drops;
    EXPECT_GT(kit.pool.workers[i]->stats.searched(), 0u) << i;
  }
  EXPECT_GT(splits, 0u);
  EXPECT_GT(joins, 0u);
  EXPECT_GE(joins + drops, splits) << "a split point was given to at least one helper";
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

}  // namespace
}  // namespace quill
