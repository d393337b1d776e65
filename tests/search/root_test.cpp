#include "search/root.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "board/movegen.h"
#include "search/line_walk.h"
#include "support/mates.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/search_kit.h"

namespace quill {
namespace {

using test::RecordingListener;
using test::SearchKit;
using Event = RecordingListener::Event;

// Looks into the pool at each event, on the master's thread.
class WatchingListener : public RecordingListener {
 public:
  void reportCurrentMove(int depth, int moveIndex, Move move) override {
    RecordingListener::reportCurrentMove(depth, moveIndex, move);
    if (onCurrentMove) onCurrentMove(depth, moveIndex);
  }
  void reportPv(int depth, int score, Move move) override {
    RecordingListener::reportPv(depth, score, move);
    if (onPv) onPv(score, move);
  }

  std::function<void(int depth, int moveIndex)> onCurrentMove;
  std::function<void(int score, Move move)> onPv;
};

class RootTest : public testing::Test {
 protected:
  RootTest() : kit(1) { kit.listener = &listener; }

  void think(const std::string& fen, int depth) {
    listener.events.clear();
    kit.setPosition(fen);
    kit.clear();
    kit.think(depth);
  }

  WatchingListener listener;
  SearchKit kit;
};

TEST_F(RootTest, EachReasonEndsTheSearch) {
  const struct {
    const char* fen;
    int limit;
    StopReason reason;
    int depth;
    const char* best;  // where it is certain
  } cases[] = {
      {"7k/8/8/8/8/8/PPP3q1/7K w - -", 0, StopSingleMove, 2, "h1g2"},
      {"6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -", 0, StopMate, 1, "d1d8"},
      {test::QuietFen, 3, StopDepth, 3, nullptr},
  };
  for (const auto& c : cases) {
    think(c.fen, c.limit);
    EXPECT_EQ(kit.state().stopReason, c.reason) << c.fen;
    EXPECT_EQ(kit.state().iterationDepth, c.depth) << c.fen;
    if (c.best != nullptr) {
      EXPECT_EQ(kit.bestMoveText(), c.best) << c.fen;
    }
    const Event& end = listener.events.back();
    EXPECT_EQ(listener.countOf(Event::Finished), 1) << c.fen;
    EXPECT_EQ(end.kind, Event::Finished) << c.fen;
    EXPECT_EQ(end.move, kit.rootMoves().bestMove()) << c.fen;
    EXPECT_EQ(end.value, bestScore(kit.rootMoves())) << c.fen;
  }
}

TEST_F(RootTest, NoLegalMoveEndsAtOnce) {
  for (const auto& [fen, score] : {std::pair{"7k/6Q1/6K1/8/8/8/8/8 b - -", -30000},
                                   std::pair{"7k/5Q2/6K1/8/8/8/8/8 b - -", 0}}) {
    think(fen, 0);
    ASSERT_EQ(listener.events.size(), 1u);
    const Event& end = listener.events[0];
    EXPECT_EQ(end.kind, Event::Finished);
    EXPECT_EQ(end.depth, 0);
    EXPECT_EQ(end.value, score);
    EXPECT_EQ(end.move, NoMove);
  }
}

TEST_F(RootTest, SpentTimeStartsNoNewIteration) {
  kit.limits.clock[White] = 60'000;
  listener.onCurrentMove = [&](int depth, int moveIndex) {
    if (depth == 3 && moveIndex == 0)
      test::crankedTicks += kit.timeControl.phaseTime(NewIterationPhase) + 1;
  };
  think(test::QuietFen, 0);
  EXPECT_EQ(kit.state().stopReason, StopTime);
  EXPECT_EQ(kit.state().iterationDepth, 3);
}

TEST_F(RootTest, SpentNodesStartNoNewIteration) {
  kit.limits.nodes = 100'000;
  kit.limits.movesToGo = 33;
  think(test::QuietFen, 0);
  EXPECT_EQ(kit.state().stopReason, StopNodes);
  EXPECT_GT(kit.state().searchedNodes(), kit.timeControl.phaseNodes(NewIterationPhase));
}

// The clock runs out in the middle of an iteration: what was searched before it counts, the move
// then being searched does not.
TEST_F(RootTest, MoveInHandWhenTheTimeEndsIsDropped) {
  kit.timeControl.setMoveTime(1000);
  RootMove before{};
  Move inHand = NoMove;
  listener.onCurrentMove = [&](int depth, int moveIndex) {
    if (depth != 5 || moveIndex != 2 || inHand != NoMove) return;
    before = kit.rootMoves().at(2);
    inHand = before.move;
    test::crankedTicks += 1001;
  };
  think(test::QuietFen, 0);
  EXPECT_EQ(kit.state().iterationDepth, 5);
  EXPECT_TRUE(kit.state().rootStop);
  const RootMoveList& moves = kit.rootMoves();
  const auto record = std::find_if(moves.records.begin(), moves.records.begin() + moves.count,
                                   [&](const RootMove& root) { return root.move == inHand; });
  ASSERT_NE(inHand, NoMove);
  EXPECT_EQ(record->depth, 4);
  EXPECT_EQ(record->score, before.score);
  EXPECT_EQ(moves.at(0).depth, 5);
}

TEST_F(RootTest, InfiniteSearchGoesOnPastItsReasons) {
  kit.limits.infinite = true;
  listener.onCurrentMove = [&](int depth, int) {
    if (depth == 6) kit.state().rootStop = true;
  };
  think("7k/8/8/8/8/8/PPP3q1/7K w - -", 2);
  EXPECT_EQ(kit.state().iterationDepth, 6);
}

TEST_F(RootTest, NodeLimitAnswersWithALegalMove) {
  for (const unsigned limit : {1, 2, 300, 5'000, 60'000}) {
    kit.limits.nodes = limit;
    think(test::KiwipeteFen, 0);
    EXPECT_TRUE(isLegalMove(kit.board(), listener.events.back().move)) << limit;
    EXPECT_LT(kit.state().searchedNodes(), limit + 2 * 4096) << limit;
  }
  kit.limits.nodes = 0;
  think(test::KiwipeteFen, 3);
  EXPECT_EQ(kit.state().stopReason, StopDepth) << "nothing of the last limit is left";
}

TEST_F(RootTest, LinesReportedAreLegalAndBeginWithTheirMove) {
  int lines = 0;
  listener.onPv = [&](int score, Move move) {
    EXPECT_LE(std::abs(score), 30000);
    const RootMoveList& moves = kit.rootMoves();
    const auto at = static_cast<std::size_t>(
        std::find_if(moves.records.begin(), moves.records.begin() + moves.count,
                     [&](const RootMove& root) { return root.move == move; }) -
        moves.records.begin());
    ASSERT_LT(at, moves.count);
    const Move* line = moves.lines[at].data();
    if (line[0] == NoMove) return;  // the first move failed low before it had a line
    EXPECT_EQ(line[0], move);
    LineWalk walk(kit.board());
    for (; *line != NoMove; ++line) {
      ASSERT_TRUE(isLegalMove(kit.board(), *line)) << getFen(kit.board()).text();
      walk.play(*line);
    }
    lines += walk.size() > 1 ? 1 : 0;
  };
  for (const int multiPv : {1, 3}) {
    kit.state().multiPv = multiPv;
    for (const char* fen : test::VariedFens) think(fen, test::effort(6, 4) - multiPv / 2);
    for (const test::ForcedMate& mate : test::ForcedMates) think(mate.fen, test::effort(5, 3));
  }
  EXPECT_GT(lines, 50);
}

TEST_F(RootTest, SeveralLinesAreKeptInOrder) {
  kit.state().multiPv = 4;
  kit.state().multiPvMargin = 0;
  think(test::QuietFen, 6);
  const RootMoveList& moves = kit.rootMoves();
  for (int slot = 0; slot < 4; ++slot) {
    EXPECT_EQ(moves.at(slot).depth, 6) << slot;
    EXPECT_EQ(moves.at(slot).bound, Exact) << slot;
    EXPECT_EQ(moves.lineAt(slot)[0], moves.at(slot).move) << slot;
    EXPECT_LE(moves.at(slot).score, moves.at(std::max(slot - 1, 0)).score) << slot;
  }
  kit.state().multiPv = 256;
  think("8/8/8/3k4/8/3KP3/8/8 w - -", 8);
  EXPECT_EQ(kit.state().iterationDepth, 8) << "more lines than moves";
}

TEST_F(RootTest, LineBelowTheMarginCostsNoWiderWindow) {
  // One move wins a queen; all others leave White far behind.
  kit.state().multiPv = 3;
  std::uint64_t nodes[2];
  for (const int margin : {0, 100}) {
    kit.state().multiPvMargin = margin;
    think("6k1/5ppp/8/3q4/4P3/8/5PPP/6K1 w - -", 7);
    EXPECT_EQ(kit.bestMoveText(), "e4d5");
    nodes[margin / 100] = kit.state().searchedNodes();
  }
  EXPECT_LT(nodes[1], nodes[0]);
}

TEST_F(RootTest, BestLineStandsInTheTableAfterwards) {
  think(test::QuietFen, 6);
  const Move* line = kit.rootMoves().lineAt(0);
  LineWalk walk(kit.board());
  int score = bestScore(kit.rootMoves());
  for (; *line != NoMove; ++line) {
    TtEntry entry;
    ASSERT_TRUE(kit.tt.probe(kit.worker(), entry)) << walk.size();
    EXPECT_EQ(entry.move, *line) << walk.size();
    EXPECT_EQ(entry.bound, ExactBound) << walk.size();
    EXPECT_EQ(entry.score, scoreToTable(score, walk.size()));
    score = -score;
    walk.play(*line);
  }
  EXPECT_GT(walk.size(), 2);
}

}  // namespace
}  // namespace quill
