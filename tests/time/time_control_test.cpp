#include "time/time_control.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <thread>
#include <vector>

namespace quill {
namespace {

std::uint32_t now = 0;
std::uint32_t handCrankedClock() { return now; }

constexpr Move MoveA = 0x0C1C;
constexpr Move MoveB = 0x0D1D;

class TimeControlTest : public testing::Test {
 protected:
  TimeControlTest() { now = 1000; }

  // As for a move of Black's; White's clock says something else.
  void setClock(int remaining, int increment, int movesToGo, bool canPonder = false,
                bool ponder = false) {
    control.setCanPonder(canPonder);
    begin({.clock = {77, remaining},
           .increment = {7, increment},
           .reserve = 3000,
           .movesToGo = movesToGo,
           .ponder = ponder});
  }
  void begin(const SearchLimits& limits) {
    control.configure(limits, Black);
    control.start();
  }

  std::vector<std::uint32_t> times() const {
    std::vector<std::uint32_t> result;
    for (int i = 0; i < PhaseCount; ++i) result.push_back(control.phaseTime(i));
    return result;
  }

  TimeControl control{handCrankedClock};
};

TEST_F(TimeControlTest, SharesTheClockOverTheMovesToGo) {
  const struct {
    int remaining, increment, movesToGo;
    bool canPonder;
    std::vector<std::uint32_t> times;
  } cases[] = {
      {60000, 0, -1, false, {162, 1058, 1628, 3256, 4884, 6512, 0}},
      {60000, 0, 33, false, {162, 1058, 1628, 3256, 4884, 6512, 0}},
      {60000, 0, 34, false, {162, 1058, 1628, 3256, 4884, 6512, 0}},
      {60000, 0, INT_MIN, false, {162, 1058, 1628, 3256, 4884, 6512, 0}},
      {60000, 0, -1, true, {227, 1481, 2279, 4558, 6837, 9116, 0}},
      {60000, 1000, -1, true, {327, 2131, 3279, 6558, 9837, 13116, 0}},
      {300000, 2000, -1, false, {1048, 6815, 10485, 20970, 31455, 41940, 0}},
      {5000, 0, 1, false, {66, 432, 666, 1332, 1334, 1334, 0}},
      // A small clock: nothing beyond it is planned.
      {2000, 0, -1, true, {14, 91, 100, 100, 100, 100, 0}},
      {0, 5000, -1, false, {100, 100, 100, 100, 100, 100, 0}},
      {3099, INT_MAX, -1, false, {100, 100, 100, 100, 100, 100, 0}},
      // An endless one: all that may be spent, and nothing overflows.
      {INT_MAX,
       INT_MAX,
       1,
       true,
       {314964128, 1431653765, 1431653765, 1431653765, 1431653765, 1431653765, 0}},
  };
  for (const auto& c : cases) {
    setClock(c.remaining, c.increment, c.movesToGo, c.canPonder);
    EXPECT_EQ(times(), c.times) << "case " << &c - cases;
    EXPECT_EQ(control.limit(), c.times[NormalPhase]) << "case " << &c - cases;
  }
}

TEST_F(TimeControlTest, SharesNodesOverTheMovesToGo) {
  const std::uint64_t shares[] = {8680, 56423, 86805, 173610, 260415, 347220, 256};
  begin({.movesToGo = 10, .nodes = 1000000});
  for (int i = 0; i < PhaseCount; ++i) EXPECT_EQ(control.phaseNodes(i), shares[i]) << i;
  EXPECT_EQ(control.nodeLimit(), 173610u);
  EXPECT_THAT(times(), testing::Each(5000u));
  begin({.movesToGo = 1, .nodes = 300});
  EXPECT_EQ(control.phaseNodes(CrisisPhase), 256u);
  control.setCanPonder(true);
  begin({.movesToGo = 1, .nodes = ~std::uint64_t{0}});
  EXPECT_LE(control.phaseNodes(CrisisPhase), std::uint64_t{INT64_MAX});
  EXPECT_GT(control.phaseNodes(CrisisPhase), control.phaseNodes(NewIterationPhase));
}

TEST_F(TimeControlTest, ANodeLimitOfNoneClearsTheBudgets) {
  begin({.nodes = 5000});
  EXPECT_FALSE(control.isNodeLimitReached(4999));
  EXPECT_TRUE(control.isNodeLimitReached(5000));
  begin({});
  EXPECT_FALSE(control.isNodeLimitReached(~std::uint64_t{0}));
}

TEST_F(TimeControlTest, AMoveTimeCountsFromTheNextStart) {
  now = 0xFFFFFF80;  // the tick counter wraps meanwhile
  control.setMoveTime(250);
  EXPECT_EQ(control.limit(), 5000u);
  control.start();
  EXPECT_EQ(control.limit(), 250u);
  now += 250;
  EXPECT_FALSE(control.isTimeUp());
  now += 1;
  EXPECT_TRUE(control.isTimeUp());
}

TEST_F(TimeControlTest, ACandidateGetsTimeWhileItIsVerified) {
  setClock(60000, 0, -1);
  control.newBestCandidate();
  EXPECT_EQ(control.phase(), NormalPhase) << "nothing changes before the first iteration";
  control.firstMoveFailedLow();
  EXPECT_EQ(control.phase(), NormalPhase);
  control.setIterationDepth(1);
  control.newBestCandidate();
  EXPECT_EQ(control.phase(), VerifyPhase);
  EXPECT_EQ(control.limit(), 4884u);
  control.candidateResolved();
  EXPECT_EQ(control.limit(), 3256u);

  control.firstMoveFailedLow();
  EXPECT_EQ(control.limit(), 6512u);
  control.newBestCandidate();
  control.candidateResolved();
  EXPECT_EQ(control.phase(), CrisisPhase) << "a crisis is not ended by a candidate";
  control.firstMoveSearched(0);
  EXPECT_EQ(control.phase(), NormalPhase);
}

TEST_F(TimeControlTest, ADroppingScoreIsACrisis) {
  control.start();
  control.setIterationDepth(2);
  control.iterationDone(MoveA, 40);
  control.setIterationDepth(3);
  control.firstMoveSearched(39);
  EXPECT_EQ(control.phase(), CrisisPhase);
  control.iterationDone(MoveA, 60);  // the reference stays at 40
  EXPECT_EQ(control.phase(), NormalPhase);
  control.firstMoveSearched(45);
  EXPECT_EQ(control.phase(), NormalPhase);
  control.iterationDone(MoveA, 30);
  EXPECT_EQ(control.phase(), CrisisPhase);
  control.iterationDone(MoveB, 35);  // another move: the reference starts anew
  EXPECT_EQ(control.phase(), NormalPhase);
  control.firstMoveSearched(34);
  EXPECT_EQ(control.phase(), CrisisPhase);
  control.start();
  control.setIterationDepth(2);
  control.firstMoveSearched(-900);
  EXPECT_EQ(control.phase(), NormalPhase) << "shallow scores are no reference";
}

TEST_F(TimeControlTest, AnInfiniteSearchHasNoTimeLimitInAnyPhase) {
  begin({.moveTime = 1, .nodes = 77, .infinite = true});
  control.setIterationDepth(5);
  control.newBestCandidate();
  control.firstMoveFailedLow();
  EXPECT_EQ(control.limit(), TimeControl::NoLimit);
  EXPECT_EQ(control.nodeLimit(), 77u);
  now += 0xFFFFFFF0;
  EXPECT_FALSE(control.isTimeUp());
}

TEST_F(TimeControlTest, PonderhitRestoresTheLimitOfThePhase) {
  setClock(60000, 0, -1, false, true);
  control.setIterationDepth(4);
  control.firstMoveFailedLow();
  EXPECT_EQ(control.limit(), TimeControl::NoLimit);
  now += 6513;
  control.ponderhit();
  EXPECT_FALSE(control.infinite());
  EXPECT_EQ(control.limit(), 6512u);
  EXPECT_TRUE(control.isTimeUp()) << "the clock has run since the search began";
}

TEST_F(TimeControlTest, PonderhitHoldsAgainstPhaseChanges) {
  for (int round = 0; round < 200; ++round) {
    setClock(60000, 0, -1, false, true);
    control.setIterationDepth(4);
    std::thread search([this] {
      for (int i = 0; i < 50; ++i) {
        control.newBestCandidate();
        control.candidateResolved();
      }
    });
    control.ponderhit();
    search.join();
    ASSERT_EQ(control.limit(), 3256u);
  }
}

}  // namespace
}  // namespace quill
