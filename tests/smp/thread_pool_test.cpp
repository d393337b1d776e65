#include "smp/thread_pool.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "board/movegen.h"
#include "support/positions.h"
#include "support/search_kit.h"

namespace quill {
namespace {

using test::effort;
using test::RecordingListener;
using test::SearchKit;

// An idle pool has everything of the parallel search put away.
void expectSettled(ThreadPool& pool) {
  EXPECT_EQ(pool.state.idleCount, 0);
  EXPECT_EQ(pool.state.waitingOwners, 0);
  EXPECT_FALSE(pool.state.poolLock.isHeld());
  for (const auto& worker : pool.workers) {
    EXPECT_EQ(worker->splitsInUse, 0);
    EXPECT_EQ(worker->currentSplit, nullptr);
    EXPECT_FALSE(worker->available);
    EXPECT_FALSE(worker->isAssigned);
    EXPECT_FALSE(worker->spinLock.isHeld());
    for (const SplitPoint& split : worker->splitPoints) {
      EXPECT_EQ(split.workers, 0);
      EXPECT_FALSE(split.lock.isHeld());
    }
  }
}

TEST(ThreadPool, WithoutThreadsNothingIsWaitedFor) {
  SearchKit kit;
  kit.setPosition(test::KiwipeteFen);
  kit.think(2);
  EXPECT_FALSE(kit.pool.isSearching());
  kit.pool.stopAll();
}

TEST(ThreadPool, CountIsClampedAndMayChangeAnyTime) {
  SearchKit kit;
  const struct {
    int asked, running;
  } cases[] = {{0, 1}, {1, 1}, {4, 4}, {4, 4}, {2, 2}, {40, 16}, {3, 3}, {-5, 1}, {5, 5}, {1, 1}};
  for (const auto& [asked, running] : cases) {
    kit.pool.setThreadCount(asked);
    EXPECT_EQ(kit.pool.threadCount(), running) << asked;
    for (int i = 0; i < MaxThreads; ++i) {
      EXPECT_EQ(kit.pool.workers[i]->thread.isRunning(), i < running);
      EXPECT_EQ(kit.pool.workers[i]->evaluator.pawnHash.count, i < running ? 131072u : 1u);
    }
    kit.setPosition(test::KiwipeteFen);
    kit.think(2);
    EXPECT_TRUE(isLegalMove(kit.board(), kit.rootMoves().bestMove())) << asked;
    expectSettled(kit.pool);
  }
}

// The counts of the search before must not be taken for those of the one just begun.
TEST(ThreadPool, CountsBeginAtZeroWithTheSearch) {
  SearchKit kit(4);
  kit.setPosition(test::KiwipeteFen);
  kit.think(7);
  const std::uint64_t before = kit.state().searchedNodes();
  kit.limits.infinite = true;
  for (int i = 0; i < 20; ++i) {
    kit.start();
    ASSERT_TRUE(kit.pool.isSearching());
    ASSERT_LT(kit.state().searchedNodes(), before);
    kit.pool.stopAll();
    ASSERT_FALSE(kit.pool.isSearching());
    for (int w = 1; w < 4; ++w) kit.pool.workers[w]->stats.nodes.add(before);
  }
}

TEST(ThreadPool, TimeLimitEndsTheSearchOnEveryThread) {
  for (const int threads : {1, 2, 4}) {
    SearchKit kit(threads, nullptr);
    kit.setPosition(test::KiwipeteFen);
    kit.timeControl.setMoveTime(50);
    const auto start = std::chrono::steady_clock::now();
    kit.think(0);
    const auto spent = std::chrono::steady_clock::now() - start;
    EXPECT_GE(spent, std::chrono::milliseconds(30)) << threads;
    EXPECT_LT(spent, std::chrono::milliseconds(effort(1000, 10'000))) << threads;
    EXPECT_TRUE(isLegalMove(kit.board(), kit.rootMoves().bestMove()));
    expectSettled(kit.pool);
  }
}

// A search that is stopped at any moment, again and again, answers once and leaves nothing behind.
void startAndStop(int threads, int rounds) {
  SearchKit kit(threads, nullptr);
  RecordingListener listener;
  kit.listener = &listener;
  kit.limits.infinite = true;
  for (int i = 0; i < rounds; ++i) {
    kit.setPosition(test::VariedFens[static_cast<std::size_t>(i) % std::size(test::VariedFens)]);
    listener.events.clear();
    kit.start();
    std::this_thread::sleep_for(std::chrono::microseconds(i % 7 * 150));
    kit.pool.stopAll();
    ASSERT_EQ(listener.countOf(RecordingListener::Event::Finished), 1) << i;
    const Move best = kit.rootMoves().bestMove();
    ASSERT_TRUE(best == NoMove ? kit.rootMoves().count == 0 : isLegalMove(kit.board(), best)) << i;
    expectSettled(kit.pool);
    ASSERT_FALSE(testing::Test::HasFailure()) << i;
  }
}

TEST(ThreadPool, StopsComeThroughAtAnyMoment) { startAndStop(2, effort(200, 50)); }

class ThreadPoolSlow : public testing::TestWithParam<int> {};

TEST_P(ThreadPoolSlow, StopsComeThroughAtAnyMoment) { startAndStop(GetParam(), effort(2000, 200)); }

// Searches that end by themselves, by time or by nodes, one right after the other, the number of
// threads changing between them.
TEST_P(ThreadPoolSlow, SearchesFollowEachOtherAtOnce) {
  SearchKit kit(GetParam(), nullptr);
  for (int i = 0; i < effort(400, 60); ++i) {
    kit.setPosition(test::VariedFens[static_cast<std::size_t>(i) % std::size(test::VariedFens)]);
    kit.timeControl.setMoveTime(static_cast<std::uint32_t>(i % 4));
    kit.limits.nodes = i % 3 == 0 ? static_cast<unsigned>(100 + i * 10) : 0;
    kit.limits.depth = i % 5 == 0 ? 3 : 0;
    kit.start();
    // Another one, within the same limits, waits for this one's end by itself.
    if (i % 2 == 0) kit.pool.startSearch(nullptr, true);
    kit.pool.waitIdle();
    const Move best = kit.rootMoves().bestMove();
    ASSERT_TRUE(best == NoMove ? kit.rootMoves().count == 0 : isLegalMove(kit.board(), best)) << i;
    // A node limit ends the search of all, whichever thread meets it.
    for (const auto& worker : kit.state().workers) {
      ASSERT_TRUE(kit.limits.nodes == 0 || worker->stats.searched() < kit.limits.nodes + 3 * 4096);
    }
    expectSettled(kit.pool);
    if (i % 16 == 0) kit.pool.setThreadCount(1 + i / 16 % GetParam());
    ASSERT_FALSE(testing::Test::HasFailure()) << i;
  }
}

INSTANTIATE_TEST_SUITE_P(Threads, ThreadPoolSlow, testing::Values(1, 2, 4, 16));

}  // namespace
}  // namespace quill
