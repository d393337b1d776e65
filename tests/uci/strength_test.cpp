#include "uci/strength.h"

#include <algorithm>
#include <random>
#include <string>

#include "board/make_move.h"
#include "board/notation.h"
#include "support/regex.h"
#include "uci/uci_fixture.h"

namespace quill {
namespace {

using test::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int Draws = 20000;

// Root moves with these scores, all of them searched as deep.
RootMoveList listOf(const std::vector<int>& scores) {
  RootMoveList list{};
  list.count = static_cast<std::uint32_t>(scores.size());
  for (unsigned i = 0; i < scores.size(); ++i) {
    list.order[i] = i;
    list.records[i] = {i + 1, static_cast<std::int16_t>(scores[i]), 5, Exact, 0};
  }
  return list;
}

// How often each slot is drawn, over many positions.
std::vector<int> drawsFrom(const RootMoveList& list, const Strength& strength) {
  std::vector<int> counts(std::max(list.count, 1u));
  std::mt19937_64 keys(7);
  for (int i = 0; i < Draws; ++i) {
    const auto slot = static_cast<unsigned>(drawRootMove(list, strength, keys()));
    if (slot < counts.size()) ++counts[slot];
  }
  return counts;
}

double meanLoss(const RootMoveList& list, int elo) {
  const std::vector<int> counts = drawsFrom(list, Strength::of(elo));
  double sum = 0;
  for (unsigned i = 0; i < counts.size(); ++i) {
    sum += counts[i] * (bestScore(list) - list.at(static_cast<int>(i)).score);
  }
  return sum / Draws;
}

TEST(Strength, GrowsWithEveryPointOfTheRating) {
  Strength lower = Strength::of(MinElo);
  for (int elo = MinElo + 1; elo <= MaxElo; ++elo) {
    const Strength higher = Strength::of(elo);
    EXPECT_GE(higher.nodes, lower.nodes) << elo;
    EXPECT_LE(higher.width, lower.width) << elo;
    EXPECT_LE(higher.lines, lower.lines) << elo;
    EXPECT_TRUE(higher.width > 0 && higher.lines > 1) << elo;
    // No step is so large that it could be felt from one rating to the next.
    EXPECT_LE(higher.nodes - lower.nodes, lower.nodes / 50 + 1) << elo;
    lower = higher;
  }
  EXPECT_GT(Strength::of(MaxElo).nodes, Strength::of(MinElo).nodes * 20);
  EXPECT_EQ(Strength::of(-5).nodes, Strength::of(MinElo).nodes);
  EXPECT_EQ(Strength::of(9999).width, Strength::of(MaxElo).width);
}

TEST(Strength, DrawsNothingThatLosesTheWidth) {
  RootMoveList list = listOf({50, 40, 20, 1, 0, -1, -300, 30});
  list.records[2].bound = FailLow;  // worth 20 at the most
  list.records[7].score = 60;       // searched less deep, so not taken for better
  list.records[7].depth = 4;
  const std::vector<int> counts = drawsFrom(list, {1000, 50, 8});
  EXPECT_THAT((std::vector<int>{counts[2], counts[4], counts[5], counts[6]}), testing::Each(0));
  EXPECT_GT(counts[0], counts[1]) << "a better move is likelier";
  EXPECT_GT(counts[1], 10 * counts[3]);
  EXPECT_GT(counts[3], 0);
  EXPECT_NEAR(counts[7], counts[0], Draws / 50) << "and no move likelier than the best";

  EXPECT_EQ(drawsFrom(list, {1000, 50, 2})[7], 0) << "only the lines are compared";
}

TEST(Strength, LosesMoreOnAverageWithALowerRating) {
  const RootMoveList list = listOf({30, 25, 15, 5, -10, -30, -60, -100, -140, -200});
  double lower = meanLoss(list, MinElo);
  for (int elo = MinElo + 200; elo <= MaxElo; elo += 200) {
    const double higher = meanLoss(list, elo);
    EXPECT_LT(higher, lower) << elo;
    lower = higher;
  }
}

TEST(Strength, AForcedMateAndALackOfMovesLeaveNoChoice) {
  for (const RootMoveList& list :
       {listOf({29999, 29995, 29993}), listOf({-29990, -29992}), listOf({10}), listOf({})}) {
    EXPECT_EQ(drawsFrom(list, Strength::of(MinElo))[0], Draws);
  }
}

// The whole engine, as the GUIs of today speak with it.
class LimitedStrength : public test::UciTest {
 protected:
  LimitedStrength() { uci.setProfile(ModernProfile); }

  void limitTo(int elo) {
    send("setoption name UCI_LimitStrength value true");
    send("setoption name UCI_Elo value " + std::to_string(elo));
  }

  // What is said about the position; empties the table first.
  std::string search(const std::string& position, const std::string& limits) {
    send("ucinewgame");
    send("position " + position);
    send("go " + limits);
    waitForTheEnd();
    return out();
  }
};

TEST_F(LimitedStrength, IsNoOptionOfTheClassicProfile) {
  uci.setProfile(ClassicProfile);
  EXPECT_THAT(uci.options().announcement(), Not(HasSubstr("UCI_Elo")));
  limitTo(1200);
  EXPECT_EQ(errors(), "Option not supported: UCI_LimitStrength\nOption not supported: UCI_Elo\n");
  startSearch("movetime 50");
  EXPECT_EQ(timeControl.phaseNodes(NormalPhase), 0u);
  waitForTheEnd();
  EXPECT_EQ(pool.state.activeMultiPv, 1);

  uci.setProfile(ModernProfile);
  EXPECT_THAT(uci.options().announcement(),
              HasSubstr("option name UCI_LimitStrength type check default false\n"
                        "option name UCI_Elo type spin default 2400 min 1200 max 2400\n"));
}

TEST_F(LimitedStrength, IsForMovesOfAGameOnly) {
  const std::uint64_t nodes = Strength::of(1500).nodes;
  const struct {
    const char* go;
    std::uint64_t nodes;
  } cases[] = {
      {"wtime 60000 btime 60000", nodes},
      {"movetime 300", nodes},
      {"depth 30", nodes},
      {"ponder wtime 60000", nodes},
      {"nodes 300", 300},
      {"nodes 90000000", nodes},
      {"infinite", 0},
      {"mate 1", 0},
  };
  limitTo(1500);
  for (const auto& c : cases) {
    startSearch(c.go);
    EXPECT_EQ(timeControl.phaseNodes(NormalPhase), c.nodes) << c.go;
    EXPECT_EQ(pool.state.activeMultiPv, c.nodes == 0 ? 1 : Strength::of(1500).lines) << c.go;
    send("stop");
  }
  startSearch("wtime 60000 btime 60000");
  const std::uint32_t time = timeControl.phaseTime(NormalPhase);
  send("setoption name UCI_AnalyseMode value true");
  startSearch("wtime 60000 btime 60000");
  EXPECT_EQ(timeControl.phaseNodes(NormalPhase), 0u);
  EXPECT_EQ(timeControl.phaseTime(NormalPhase), time) << "the clock is obeyed in the same way";
  send("stop");
}

TEST_F(LimitedStrength, ShowsTheLinesThatAreAskedFor) {
  limitTo(1200);
  EXPECT_THAT(search("startpos", "movetime 500"), Not(HasSubstr("multipv")));
  send("setoption name MultiPV value 2");
  const std::string text = search("startpos", "movetime 500");
  EXPECT_THAT(text, ContainsRegex(" multipv 2 .* multipv 1 [^\n]*\nbestmove"));
  EXPECT_THAT(text, Not(HasSubstr("multipv 3")));
}

TEST_F(LimitedStrength, PlaysTheSameGameAgainAndSaysWhatItPlays) {
  limitTo(1400);
  std::string games[2];
  int others = 0;
  for (int threads : {1, 3}) {
    send("setoption name Threads value " + std::to_string(threads));
    send("ucinewgame");
    std::string& moves = games[threads == 1 ? 0 : 1];
    for (int ply = 0; ply < 40; ++ply) {
      send("position startpos moves" + moves);
      send("go wtime 600000 btime 600000");
      waitForTheEnd();
      char text[MoveTextSize];
      uciMoveText(text, pool.state.rootMoves.bestMove(), PromotionCase::Lower);
      moves.append(" ").append(text);
      // The last line and the answer are of the same move.
      const std::string said = out();
      const std::size_t last = said.rfind(" pv ");
      EXPECT_EQ(said.find(text, last), last + 4) << said;
      EXPECT_EQ(said.find(text, said.rfind("bestmove ")), said.rfind("bestmove ") + 9) << said;
      others += pool.state.rootMoves.order[0] != pool.state.rootMoves.order[1] &&
                        pool.state.rootMoves.at(0).score < pool.state.rootMoves.at(1).score
                    ? 1
                    : 0;
    }
  }
  EXPECT_EQ(games[0], games[1]);
  EXPECT_GT(others, 8) << games[0];
  EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(LimitedStrength, PlaysAMateInOne) {
  for (const int elo : {MinElo, 1800, MaxElo}) {
    limitTo(elo);
    EXPECT_THAT(search("fen 6k1/5ppp/8/8/8/8/5PPP/R5K1 w - - 0 1", "movetime 500"),
                ContainsRegex("score mate 1 [^\n]* pv a1a8\nbestmove a1a8"))
        << elo;
  }
}

}  // namespace
}  // namespace quill
