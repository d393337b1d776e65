#include "search/report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "board/make_move.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/regex.h"
#include "support/search_kit.h"

namespace quill {
namespace {

using test::ContainsRegex;
using test::moveOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class ReportTest : public testing::Test {
 protected:
  ReportTest() {
    kit.state().quiet = false;
    kit.timeControl.start();
    kit.setPosition("6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -");
  }

  // The search as it stands when a line is written.
  void be(int depth, int selDepth, std::uint32_t ms, std::uint64_t nodes) {
    kit.state().iterationDepth = depth;
    kit.worker().selDepth = selDepth;
    kit.timeControl.start();
    test::crankedTicks += ms;
    kit.worker().stats.reset();
    kit.worker().stats.nodes.add(nodes / 2);
    kit.worker().stats.qnodes.add(nodes - nodes / 2);
  }

  std::string headOf(int score) {
    printSearchLine(kit.state(), score, nullptr);
    return log.take();
  }

  test::SearchKit kit;
  test::LogCapture log;
};

TEST_F(ReportTest, HeadHasFixedColumns) {
  be(7, 15, 1234, 5678);
  EXPECT_EQ(headOf(42), "  [7/15]    1.234    5678       42 ");
  be(12, 9, 59'999, 99'999);
  EXPECT_EQ(headOf(-7), " [12/9]    59.999   99999       -7 ");
  be(100, 100, 75'500, 123'456);
  EXPECT_EQ(headOf(0), "[100/100]  0:01:15     120k       0 ");
  be(1, 0, 36'610'000, 0);
  EXPECT_EQ(headOf(0), "  [1/0]  10:10:10       0        0 ");
}

TEST_F(ReportTest, MatesAreCountedInMoves) {
  const std::pair<int, const char*> cases[] = {
      {29999, "      +1#"},  {29997, "      +2#"},   {29000, "     +500#"}, {28999, "   28999 "},
      {-28999, "  -28999 "}, {-29000, "     -500#"}, {-29998, "      -1#"}, {-29996, "      -2#"}};
  for (const auto& [score, text] : cases) {
    be(1, 1, 0, 0);
    EXPECT_EQ(headOf(score).substr(26), text);
  }
}

TEST_F(ReportTest, LongCountsCarryAUnit) {
  const std::pair<std::uint64_t, std::string> cases[] = {{0, "0 "},
                                                         {99'999, "99999 "},
                                                         {100'000, "97k"},
                                                         {99'999ull << 10, "99999k"},
                                                         {100'000ull << 10, "97m"},
                                                         {100'000ull << 20, "97g"},
                                                         {100'000ull << 30, "97t"},
                                                         {~0ull, "16383?"}};
  for (const auto& [count, expected] : cases) {
    const ShortCount text = shortenCount(count);
    EXPECT_EQ(std::to_string(text.value) + text.unit, expected);
  }
}

TEST_F(ReportTest, FailLinesNameTheMove) {
  be(9, 9, 0, 0);
  printFailLine(kit.state(), 30, "++3/20 ", moveOf(kit.board(), "d1d8"));
  EXPECT_THAT(log.take(), EndsWith("      30  ++3/20 d1d8\n"));
  printFailLine(kit.state(), 30, "--", NoMove);
  EXPECT_THAT(log.take(), EndsWith("      30  --\n"));
}

TEST_F(ReportTest, IterationEndsWithReasonAndRatio) {
  be(9, 9, 0, 0);
  printIteration(kit.state(), 30, "single move", 2.26f, "(INF)");
  EXPECT_THAT(log.take(), EndsWith("      30  single move/2.3 (INF)\n"));
}

TEST_F(ReportTest, LineIsWrittenInAlgebraicNotation) {
  test::RecordingListener listener;
  kit.state().listener = &listener;
  be(3, 3, 0, 0);
  kit.setPosition("r3k2r/8/8/8/8/8/1P6/4K2R w Kkq -");
  kit.state().rootMoves.clear();
  kit.state().rootMoves.count = 1;
  kit.state().rootMoves.records[0] = {moveOf(kit.board(), "e1g1"), 55, 3, Exact, 0};
  Board board(kit.board());
  auto& line = kit.state().rootMoves.lines[0];
  std::size_t length = 0;
  for (const char* text : {"e1g1", "h8h1", "g1h1", "e8c8", "b2b4"}) {
    line[length] = moveOf(board, text);
    makeMove(board, line[length++]);
  }
  line[length] = NoMove;
  printPvLine(kit.state(), 0);
  EXPECT_THAT(log.take(), EndsWith("      55  O-O Rh1+ Kxh1 O-O-O b4 \n"));
  EXPECT_EQ(kit.board().ply, 0);
  ASSERT_EQ(listener.countOf(test::RecordingListener::Event::Pv), 1);
  EXPECT_EQ(listener.events[0].move, line[0]);

  kit.state().activeMultiPv = 2;
  printPvLine(kit.state(), 0);
  EXPECT_THAT(log.take(), HasSubstr(" 1) O-O "));
}

TEST_F(ReportTest, QuietPoolWritesTheRatioAlone) {
  kit.state().quiet = true;
  printSearchLine(kit.state(), 30, "stopped\n");
  printFailLine(kit.state(), 30, "--", moveOf(kit.board(), "d1d8"));
  printPvLine(kit.state(), 0);
  EXPECT_EQ(log.take(), "");
  printIteration(kit.state(), 30, "ok", 2.0f, "");
  EXPECT_EQ(log.take(), "/2.0 \n");
}

TEST_F(ReportTest, StatisticsAddUp) {
  SearchStats stats;
  // Stopped between the count of a frontier node and its quiescence search.
  stats.frontierNodes.add(1);
  printStatistics(stats, 0.0, 1024);
  EXPECT_EQ(log.take(),
            "nodes  : 0  i= 0.00%, f= 0.00%, q= 0.00%, p= 0.00%, nps=0 \n"
            "tt     : upd= 0.00%, full= 0.00%\n");
  stats.nodes.add(50'000);
  stats.qnodes.add(130'000);
  stats.frontierNodes.add(39'999);
  stats.pruned.add(20'000);
  stats.ttHits.add(1'000);
  stats.ttNew.add(3'000);
  stats.ttOverwrites.add(500);
  printStatistics(stats, 0.5, 10'000);
  EXPECT_EQ(log.take(),
            "nodes  : 195k i=25.00%, f=20.00%, q=45.00%, p=10.00%, nps=390k\n"
            "tt     : upd=25.00%, full=25.00%\n");
}

TEST_F(ReportTest, ThreadLinesShowWhereTheTimeWent) {
  Worker& worker = *kit.pool.workers[1];
  worker.splits = 1;
  worker.joins = 2;
  worker.kills = 3;
  worker.timeSpent = {9, 60, 70, 80, 90, 500};
  worker.stats.nodes.add(250'000);
  printThreadStatistics(worker);
  EXPECT_EQ(log.take(),
            "slave : splits=1, joins=2, kills=3, admin=90, masterwait=70, slavewait=80, "
            "workwait=60, work=500, nodes=244k, nps=488k\n");
}

// What a search to the mate in one, or to its node limit, writes.
std::string reportOf(int threads, unsigned nodes) {
  test::SearchKit kit(threads);
  test::LogCapture log;
  kit.quiet = false;
  kit.setPosition("6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -");
  kit.limits.nodes = nodes;
  kit.think(0);
  return log.take();
}

TEST(ReportOfASearch, LinesFollowEachOther) {
  const std::string alone = reportOf(1, 0);
  EXPECT_THAT(alone, HasSubstr(" Rd8+ \n"));
  EXPECT_THAT(alone, HasSubstr("      +1# (optimal)/"));
  EXPECT_THAT(alone, HasSubstr("\nnodes  : "));
  EXPECT_THAT(alone, Not(HasSubstr("master:"))) << "one thread has nothing to compare";
  EXPECT_THAT(reportOf(1, 1), HasSubstr(" stopped\nnodes  : "));
  EXPECT_THAT(reportOf(3, 0), ContainsRegex("\nmaster: .*\nslave : .*\nslave : .*\n$"));
}

}  // namespace
}  // namespace quill
