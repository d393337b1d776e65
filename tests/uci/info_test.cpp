#include "uci/info.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

namespace quill {
namespace {

const Move E2E4 = makeQuiet(E2, E4) | DoubleStepFlag;
const Move E7E5 = makeQuiet(E7, E5) | DoubleStepFlag;

constexpr SearchSnapshot Early = {99, 1234, 10, 1000, 7};

// Three root moves, the second of them searched first and now the best.
class PvBlock : public testing::Test {
 protected:
  PvBlock() {
    list->count = 3;
    list->order = {1, 0, 2};
    list->records[0] = {makeQuiet(D2, D4), 20, 5, Exact, 0};
    list->records[1] = {E2E4, 35, 5, Exact, 0};
    list->records[2] = {makeQuiet(A2, A3), -10, 4, FailHigh, 0};
    list->lines[0] = {makeQuiet(D2, D4)};
    list->lines[1] = {E2E4, E7E5};
    list->lines[2] = {makeQuiet(A2, A3)};
  }

  std::string block(int lines, int filterDepth = 0, bool sendPv = true) const {
    return pvBlock(*list, {lines, filterDepth, sendPv}, Early);
  }

  std::unique_ptr<RootMoveList> list = std::make_unique<RootMoveList>();
};

TEST(Info, SpeedIsShownFromAHundredMillisecondsOn) {
  const std::pair<SearchSnapshot, const char*> cases[] = {
      {Early, " time 99 nodes 1234 hashfull 10"},
      {{100, 1239, 999, 1000, 7}, " time 100 nodes 1239 nps 12390 hashfull 999"},
      {{12340, 7'000'000'000, 10, 1000, 7},
       " time 12340 nodes 7000000000 nps 567260940 hashfull 10"},
  };
  for (const auto& [snapshot, expected] : cases) {
    std::string text;
    appendStatsTail(text, snapshot);
    EXPECT_EQ(text, expected);
  }
}

TEST(Info, MovesAreNumberedFromOneAndPromoteInUpperCase) {
  EXPECT_EQ(currentMoveLine(12, 0, withPromotion(makeQuiet(E7, E8), Queen), Early),
            "info depth 12 currmovenumber 1 currmove e7e8Q time 99 nodes 1234 hashfull 10\n");
}

TEST_F(PvBlock, SeveralLinesCarryTheirRank) {
  EXPECT_EQ(block(2),
            "info depth 5 seldepth 7 score cp 35 time 99 nodes 1234 hashfull 10"
            " multipv 1 pv e2e4 e7e5\n"
            "info depth 5 seldepth 7 score cp 20 time 99 nodes 1234 hashfull 10"
            " multipv 2 pv d2d4\n");
}

TEST_F(PvBlock, LinesOfLesserDepthOrFailedLowAreLeftOut) {
  EXPECT_EQ(block(3, 5), block(2));
  list->records[0].bound = FailLow;
  EXPECT_EQ(block(3, 5).find("multipv 2"), std::string::npos);
  EXPECT_NE(block(3, 4).find("multipv 3"), std::string::npos);
}

TEST_F(PvBlock, ASingleLineIsNeverLeftOutAndMayGoWithoutItsVariation) {
  const std::string head = "info depth 5 seldepth 7 score cp 35 time 99 nodes 1234 hashfull 10";
  EXPECT_EQ(block(1, 9), head + " pv e2e4 e7e5\n");
  EXPECT_EQ(block(1, 9, false), head + "\n");
  list->lines[1][0] = NoMove;
  EXPECT_EQ(block(1), head + "\n");
}

TEST_F(PvBlock, MatesAreCountedInMovesAndBoundsAreNamed) {
  const struct {
    int score;
    RootBound bound;
    const char* text;
  } cases[] = {
      {29999, Exact, "score mate 1"},           {29997, Exact, "score mate 2"},
      {29001, Exact, "score mate 500"},         {29000, Exact, "score cp 29000"},
      {-29000, Exact, "score cp -29000"},       {-29998, Exact, "score mate -1"},
      {-30000, Exact, "score mate -0"},         {35, FailLow, "score cp 35 upperbound"},
      {35, FailHigh, "score cp 35 lowerbound"}, {35, NotSearched, "score cp 35 lowerbound"},
  };
  for (const auto& c : cases) {
    list->records[1].score = static_cast<std::int16_t>(c.score);
    list->records[1].bound = c.bound;
    EXPECT_THAT(block(1), testing::HasSubstr(std::string(" ") + c.text + " time "));
  }
}

TEST(InfoThrottle, TheFirstMoveIsAnnouncedAtOnceTheOthersEachHundredMilliseconds) {
  InfoThrottle throttle;
  EXPECT_TRUE(throttle.admitsCurrentMove(0, 0));
  EXPECT_FALSE(throttle.admitsCurrentMove(1, 99));
  EXPECT_TRUE(throttle.admitsCurrentMove(2, 100));
  EXPECT_FALSE(throttle.admitsCurrentMove(3, 199));
  EXPECT_TRUE(throttle.admitsCurrentMove(0, 150));
  EXPECT_FALSE(throttle.admitsCurrentMove(4, 249)) << "each announcement begins a new interval";
}

TEST(InfoThrottle, AStableBestMoveIsReportedSparsely) {
  InfoThrottle throttle;
  for (int depth = 1; depth <= 9; ++depth) {
    EXPECT_TRUE(throttle.admitsPv(depth, 30, E2E4, 0)) << depth;
    throttle.pvShown(depth, 30, E2E4);
    EXPECT_TRUE(throttle.admitsCurrentMove(0, 0)) << depth;
  }
  EXPECT_FALSE(throttle.admitsPv(10, 30, E2E4, 50));
  EXPECT_FALSE(throttle.admitsCurrentMove(0, 99)) << "the first move is held back as well";
  EXPECT_TRUE(throttle.admitsPv(11, 30, E2E4, 100));
  throttle.pvShown(11, 30, E2E4);
  EXPECT_TRUE(throttle.admitsPv(12, 31, E2E4, 50)) << "another score is news";
  throttle.pvShown(12, 31, E2E4);
  EXPECT_TRUE(throttle.admitsCurrentMove(0, 60));
  EXPECT_TRUE(throttle.admitsPv(20, 31, E2E4, 70)) << "eight depths are still young";

  throttle.reset();
  EXPECT_TRUE(throttle.admitsPv(40, 31, E2E4, 0));
}

}  // namespace
}  // namespace quill
