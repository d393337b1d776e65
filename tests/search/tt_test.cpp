#include "search/tt.h"

#include <gtest/gtest.h>

#include <random>
#include <thread>

#include "board/movegen.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/search_kit.h"

namespace quill {
namespace {

using test::moveOf;

class TtTest : public testing::Test {
 protected:
  TtTest() { kit.setPosition(test::StartFen); }

  Tt& tt() { return kit.tt; }
  Worker& worker() { return kit.worker(); }

  // Makes the board stand for another position: its home in the table and its lock.
  void be(std::uint32_t home, std::uint32_t id) {
    kit.board().key = (std::uint64_t{id ^ home} << 32) | home;
  }

  void store(int bound, int depth, int score, Move move = NoMove, int eval = 0) {
    tt().storeScore(worker(), bound, depth, 0, score, move, eval);
  }

  // Stores a result for each depth, of positions with the ids from 1 up that share a home.
  void fill(std::uint32_t home, std::initializer_list<int> depths) {
    std::uint32_t id = 0;
    for (const int depth : depths) {
      be(home, ++id);
      store(ExactBound, depth, 0);
    }
  }

  bool isKnown() {
    TtEntry entry;
    return tt().probe(worker(), entry);
  }

  TtEntry known() {
    TtEntry entry{};
    EXPECT_TRUE(tt().probe(worker(), entry));
    return entry;
  }

  test::SearchKit kit;
};

TEST_F(TtTest, SizeIsThePowerOfTwoNotAboveTheRequest) {
  EXPECT_EQ(tt().sizeBytes(), 1u << 20) << "as constructed";
  const std::pair<std::uint64_t, std::uint64_t> cases[] = {
      {0, 262144}, {511, 262144}, {512, 524288}, {3 * 1024, 2 << 20}, {65535, 32 << 20}};
  for (const auto& [kilobytes, bytes] : cases) {
    EXPECT_EQ(tt().resize(kilobytes), bytes) << kilobytes;
    EXPECT_EQ(tt().entries(), bytes / 16) << kilobytes;
    store(LowerBound, 1, 10);
    EXPECT_TRUE(isKnown()) << kilobytes;
  }
}

TEST_F(TtTest, OnlyAChangeOfSizeEmptiesTheTable) {
  store(ExactBound, 5, 77);
  tt().resize(1500);
  EXPECT_TRUE(isKnown());
  tt().resize(2048);
  EXPECT_FALSE(isKnown());
}

TEST_F(TtTest, EntryComesBackWhole) {
  const Move move = moveOf(kit.board(), "g1f3") | MarkFlag;
  store(ExactBound, 200, 0);
  EXPECT_EQ(known().depth, 127) << "what a byte holds";
  tt().clear();
  store(ExactBound, -2, -123, move, -9999);
  const TtEntry entry = known();
  EXPECT_EQ(entry.move, move) << "mark included";
  EXPECT_EQ(entry.bound, ExactBound);
  EXPECT_EQ(entry.depth, -2);
  EXPECT_EQ(entry.score, -123);
  EXPECT_EQ(entry.eval, -9999);
}

TEST_F(TtTest, OtherSideToMoveIsAnotherPosition) {
  store(ExactBound, 5, 77);
  kit.board().stm = Black;
  EXPECT_FALSE(isKnown());
  store(ExactBound, 6, -77);
  EXPECT_EQ(known().score, -77);
  kit.board().stm = White;
  EXPECT_EQ(known().score, 77);
}

TEST_F(TtTest, EmptyEntryIsNoEntryOfThePositionWithLockZero) {
  kit.board().key = 0x0000123400001234;
  EXPECT_FALSE(isKnown());
  store(UpperBound, 3, 1);
  EXPECT_TRUE(isKnown());
}

TEST_F(TtTest, ShallowerResultReplacesOnlyWhenItNarrowsTheBound) {
  struct Result {
    int bound, depth, score;
  };
  constexpr int StaticLower = LowerBound | StaticCut;
  const struct {
    Result old, next;
    bool replaces;
  } cases[] = {
      {{ExactBound, 5, 10}, {ExactBound, 4, 10}, false},
      {{ExactBound, 5, 10}, {ExactBound, 5, 20}, true},
      {{ExactBound, 5, 10}, {LowerBound, 4, 500}, false},
      {{LowerBound, 5, 10}, {LowerBound, 4, 10}, false},
      {{LowerBound, 5, 10}, {LowerBound, 4, 11}, true},
      {{LowerBound, 5, 10}, {UpperBound, 4, 9}, false},
      {{StaticLower, 5, 10}, {LowerBound, 4, 10}, false},
      {{StaticLower, 5, 10}, {LowerBound, 4, 11}, true},
      {{UpperBound, 5, 10}, {UpperBound, 4, 10}, false},
      {{UpperBound, 5, 10}, {UpperBound, 4, 9}, true},
      {{UpperBound, 5, 10}, {LowerBound, 4, 9}, true},
      // Depths are signed.
      {{ExactBound, -64, 10}, {UpperBound, -2, 300}, true},
      {{ExactBound, 0, 10}, {UpperBound, -1, 300}, false},
  };
  for (const auto& [old, next, replaces] : cases) {
    tt().clear();
    worker().stats.reset();
    store(old.bound, old.depth, old.score);
    store(next.bound, next.depth, next.score);
    const TtEntry entry = known();
    const Result& expected = replaces ? next : old;
    EXPECT_TRUE(entry.bound == expected.bound && entry.depth == expected.depth &&
                entry.score == expected.score)
        << old.bound << '/' << old.depth << '/' << old.score << " then " << next.bound << '/'
        << next.depth << '/' << next.score;
    EXPECT_EQ(worker().stats.ttHits, replaces ? 1u : 0u);
    EXPECT_EQ(worker().stats.ttNew, 1u);
  }
}

TEST_F(TtTest, ResultWithoutAMoveKeepsTheOldMoveOfItsPosition) {
  const Move move = moveOf(kit.board(), "e2e4");
  store(LowerBound, 3, 50, move);
  store(UpperBound, 4, 20, moveOf(kit.board(), "d2d4"));
  EXPECT_EQ(known().move, move) << "a fail-low result has no move of its own";
  store(LowerBound | StaticCut, 5, 60);
  EXPECT_EQ(known().move, move);
  store(ExactBound, 6, 55, moveOf(kit.board(), "d2d4"));
  EXPECT_EQ(known().move, moveOf(kit.board(), "d2d4"));

  tt().clear();
  store(UpperBound, 4, 20, move);
  EXPECT_EQ(known().move, NoMove);
}

TEST_F(TtTest, ShallowestEntryOfTheBucketGivesWay) {
  for (const bool isStale : {false, true}) {
    tt().clear();
    fill(0, {7, 3, isStale ? 100 : 4, 9});
    if (isStale) tt().newSearch();
    // A hit makes an old entry current again; a stale one gives way whatever its depth.
    for (const std::uint32_t id : {1, 2, 4}) {
      be(0, id);
      EXPECT_EQ(known().generation, tt().generation());
    }
    be(0, 10);
    store(ExactBound, 1, 0);
    for (std::uint32_t id = 1; id <= 4; ++id) {
      be(0, id);
      EXPECT_EQ(isKnown(), id != (isStale ? 3 : 2)) << id;
    }
  }
}

TEST_F(TtTest, StoresAreCountedByWhatTheyMeet) {
  const SearchStats& stats = worker().stats;
  fill(0, {5, 5, 5, 5, 5});
  EXPECT_EQ(stats.ttNew, 5u);
  EXPECT_EQ(stats.ttOverwrites, 1u) << "the fifth displaced a current entry";
  tt().newSearch();
  fill(0, {5});
  EXPECT_EQ(stats.ttNew, 6u);
  EXPECT_EQ(stats.ttOverwrites, 1u) << "an old entry counts as free";
}

TEST_F(TtTest, RemoveEmptiesThePositionAlone) {
  fill(0, {5, 5});
  EXPECT_TRUE(tt().remove(worker()));
  EXPECT_FALSE(isKnown());
  EXPECT_FALSE(tt().remove(worker()));
  be(0, 1);
  EXPECT_TRUE(isKnown());
}

TEST_F(TtTest, MateScoresAreRelativeToThePosition) {
  // Mate in five plies, found at ply 3, from a position that is two plies from it.
  tt().storeScore(worker(), ExactBound, 5, 3, 29995, NoMove, 0);
  EXPECT_EQ(known().score, 29998);
  EXPECT_EQ(scoreFromTable(29998, 7), 29991);
  EXPECT_EQ(scoreToTable(-29995, 3), -29998);
  EXPECT_EQ(scoreFromTable(-29998, 7), -29991);
  EXPECT_EQ(scoreToTable(29010, 50), 29010) << "not a mate score";
}

// Several threads on few entries: halves of different entries get mixed, but what a probe hands out
// can always be played.
TEST_F(TtTest, ProbeHandsOutLegalMovesOnlyWhileOthersWrite) {
  constexpr int Threads = 4;
  constexpr int Rounds = test::effort(200'000, 20'000);
  const auto hammer = [this](int index) {
    Worker& own = *kit.pool.workers[index];
    std::mt19937 random(static_cast<unsigned>(index));
    std::vector<std::vector<Move>> moves;
    std::vector<Board> boards;
    for (const char* fen : test::VariedFens) {
      boards.push_back(test::boardOf(fen));
      moves.push_back(test::legalMovesOf(boards.back()));
      // All in one bucket, with the same lock.
      boards.back().key = 0x0000000500000005;
    }
    for (int i = 0; i < Rounds; ++i) {
      const std::size_t at = random() % boards.size();
      own.board.copyFrom(boards[at]);
      const Move move = moves[at][random() % moves[at].size()];
      kit.tt.storeScore(own, ExactBound, static_cast<int>(random() % 20), 0, 0, move, 0);
      TtEntry entry;
      if (kit.tt.probe(own, entry) && entry.move != NoMove) {
        ASSERT_TRUE(isLegalMove(own.board, entry.move)) << test::VariedFens[at];
      }
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < Threads; ++i) threads.emplace_back(hammer, i);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace quill
