#include "uci/info.h"

#include <gtest/gtest.h>

#include <memory>

namespace quill {
namespace {

const Move E2E4 = makeQuiet(E2, E4) | DoubleStepFlag;
const Move E7E5 = makeQuiet(E7, E5) | DoubleStepFlag;
const Move Promotion = withPromotion(makeQuiet(E7, E8), Queen);

constexpr SearchSnapshot Early = {99, 1234, 10, 1000, 7};
constexpr SearchSnapshot Late = {12340, 7'000'000'000, 10, 1000, 7};

std::string tail(const SearchSnapshot& snapshot) {
  std::string text;
  appendStatsTail(text, snapshot);
  return text;
}

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
  std::string scoreOf(int score) {
    list->records[1].score = static_cast<std::int16_t>(score);
    const std::string text = block(1);
    const std::size_t from = text.find("score ");
    return text.substr(from, text.find(" time") - from);
  }

  std::unique_ptr<RootMoveList> list = std::make_unique<RootMoveList>();
};

TEST(Info, SpeedIsShownFromAHundredMillisecondsOn) {
  EXPECT_EQ(tail(Early), " time 99 nodes 1234 hashfull 10");
  EXPECT_EQ(tail({100, 1239, 999, 1000, 7}), " time 100 nodes 1239 nps 12390 hashfull 999");
  EXPECT_EQ(tail({101, 1000, 0, 1, 7}), " time 101 nodes 1000 nps 9900 hashfull 0");
  EXPECT_EQ(tail(Late), " time 12340 nodes 7000000000 nps 567260940 hashfull 10");
}

TEST(Info, MovesAreNumberedFromOneAndPromoteInUpperCase) {
  EXPECT_EQ(currentMoveLine(12, 0, Promotion, Early),
            "info depth 12 currmovenumber 1 currmove e7e8Q time 99 nodes 1234 hashfull 10\n");
}

TEST_F(PvBlock, TheBestLineAlone) {
  EXPECT_EQ(block(1),
            "info depth 5 seldepth 7 score cp 35 time 99 nodes 1234 hashfull 10 pv e2e4 e7e5\n");
  EXPECT_EQ(block(1, 9), block(1)) << "a single line is never left out";
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

TEST_F(PvBlock, WithoutVariationsOnlyTheHeadsAreSent) {
  EXPECT_EQ(block(1, 0, false),
            "info depth 5 seldepth 7 score cp 35 time 99 nodes 1234 hashfull 10\n");
  list->lines[1][0] = NoMove;
  EXPECT_EQ(block(1), block(1, 0, false));
}

TEST_F(PvBlock, MatesAreCountedInMoves) {
  EXPECT_EQ(scoreOf(29999), "score mate 1");
  EXPECT_EQ(scoreOf(29997), "score mate 2");
  EXPECT_EQ(scoreOf(29001), "score mate 500");
  EXPECT_EQ(scoreOf(29000), "score cp 29000");
  EXPECT_EQ(scoreOf(-29000), "score cp -29000");
  EXPECT_EQ(scoreOf(-29998), "score mate -1");
  EXPECT_EQ(scoreOf(-29996), "score mate -2");
  EXPECT_EQ(scoreOf(-30000), "score mate -0");
}

TEST_F(PvBlock, BoundsAreNamed) {
  const auto boundOf = [this](RootBound bound) {
    list->records[1].bound = bound;
    return scoreOf(35);
  };
  EXPECT_EQ(boundOf(Exact), "score cp 35");
  EXPECT_EQ(boundOf(FailLow), "score cp 35 upperbound");
  EXPECT_EQ(boundOf(FailHigh), "score cp 35 lowerbound");
  EXPECT_EQ(boundOf(NotSearched), "score cp 35 lowerbound");
}

TEST_F(PvBlock, GrowsWithItsLines) {
  list->count = 200;
  for (unsigned i = 0; i < list->count; ++i) {
    list->order[i] = i;
    list->records[i] = {E2E4, 0, 5, Exact, 0};
    list->lines[i].fill(E2E4);
    list->lines[i].back() = NoMove;
  }
  const std::string text = block(200);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 200);
  EXPECT_GT(text.size(), 200u * 127 * 5);
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
