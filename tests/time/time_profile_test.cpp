#include "time/time_profile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>

#include "time/time_control.h"

namespace quill {
namespace {

class ModernTimeTest : public testing::Test {
 protected:
  ModernTimeTest() { control.setProfile(ModernTime); }

  // The clock that is left, in ms, when it is at its lowest in a game whose every move takes all of
  // its normal budget, the millisecond by which a search may overrun it and what the change between
  // two processes costs. Below 0 the game is lost.
  double lowestClock(int start, int increment, int movesToGo, int moves) {
    constexpr double ProcessSwitches = 0.3;
    double clock = start;
    double lowest = clock;
    for (int move = 0; move < moves; ++move) {
      const bool isPeriodic = movesToGo > 0;
      if (isPeriodic && move > 0 && move % movesToGo == 0) clock += start;
      control.configure({.clock = {static_cast<int>(std::lround(clock)), 1},
                         .increment = {increment, 0},
                         .overhead = 30,
                         .movesToGo = isPeriodic ? movesToGo - move % movesToGo : -1});
      const std::uint32_t budget = control.phaseTime(NormalPhase);
      if (control.depthLimit() != 1) clock -= budget + 1;
      clock -= ProcessSwitches;
      lowest = std::min(lowest, clock);
      clock += increment;
    }
    return lowest;
  }

  TimeControl control;
};

TEST_F(ModernTimeTest, TheClockLastsForLongGames) {
  const struct {
    int start, increment, movesToGo, moves;
  } games[] = {{1000, 0, 0, 200},  {60000, 0, 0, 250},   {1000, 10, 0, 300}, {2000, 20, 0, 300},
               {5000, 50, 0, 300}, {10000, 0, 40, 160},  {1000, 0, 40, 80},  {3000, 1, 0, 200},
               {40, 100, 0, 50},   {10000, 100, 0, 300}, {50, 0, 1, 50}};
  for (const bool canPonder : {false, true}) {
    control.setCanPonder(canPonder);
    for (const auto& g : games) {
      EXPECT_GE(lowestClock(g.start, g.increment, g.movesToGo, g.moves), 0.0)
          << g.start << " ms, increment " << g.increment << ", control " << g.movesToGo
          << ", ponder " << canPonder;
    }
  }
}

TEST_F(ModernTimeTest, NoBudgetExceedsWhatIsLeft) {
  for (const int clock : {0, 1, 29, 30, 31, 60, 150, 999, 5000, 7200000, INT_MAX}) {
    for (const int increment : {0, 10, 5000, INT_MAX}) {
      for (const int movesToGo : {-1, 0, 1, 2, 40, INT_MAX}) {
        for (const std::uint32_t overhead : {0u, 30u, 5000u}) {
          for (const bool canPonder : {false, true}) {
            control.setCanPonder(canPonder);
            control.configure({.clock = {clock, 1},
                               .increment = {increment, 0},
                               .overhead = overhead,
                               .movesToGo = movesToGo});
            const std::int64_t left = std::max<std::int64_t>(std::int64_t{clock} - overhead, 0);
            for (int phase = 0; phase < PhaseCount; ++phase) {
              EXPECT_LE(control.phaseTime(phase), left)
                  << clock << "+" << increment << ", " << movesToGo << " to go, phase " << phase;
            }
            // But something is played with.
            if (left >= 150) {
              EXPECT_GE(control.phaseTime(NormalPhase), 2u) << clock;
            }
          }
        }
      }
    }
  }
}

TEST_F(ModernTimeTest, WhatIsTooLittleForABudgetEndsTheSearchWithItsFirstIteration) {
  const std::pair<SearchLimits, int> cases[] = {
      {{.overhead = 30, .moveTime = 30}, 1},
      {{.overhead = 30, .moveTime = 31}, 0},
      {{.clock = {0, 9000}, .overhead = 30}, 1},
      {{.clock = {35, 9000}, .overhead = 20, .depth = 9}, 1},
      {{.clock = {500, 0}, .overhead = 20, .depth = 9}, 9},
      {{.depth = 9, .untimed = true}, 9},
      {{.overhead = 30, .moveTime = 30}, 1},
      {{.infinite = true}, 0}};
  for (const auto& c : cases) {
    control.configure(c.first);
    EXPECT_EQ(control.depthLimit(), c.second) << "case " << &c - cases;
  }
}

TEST_F(ModernTimeTest, ASearchWithoutALimitOfTimeLeavesTheBudgetsToLaterOnes) {
  control.setMoveTime(700);
  control.configure({.depth = 9, .untimed = true});
  EXPECT_EQ(control.limit(), TimeControl::NoLimit);
  EXPECT_EQ(control.phaseTime(NewIterationPhase), TimeControl::NoLimit);
  control.configure({});
  EXPECT_EQ(control.limit(), 700u);
  control.configure({.depth = 9, .untimed = true});
  control.setMoveTime(800);
  EXPECT_EQ(control.phaseTime(NormalPhase), 800u);
}

}  // namespace
}  // namespace quill
