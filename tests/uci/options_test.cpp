#include "uci/options.h"

#include "support/regex.h"
#include "uci/uci_fixture.h"

namespace quill {
namespace {

using test::MatchesRegex;
using testing::HasSubstr;
using testing::SizeIs;
using Options = test::UciTest;

TEST_F(Options, OnlyTheWordTrueSwitchesOn) {
  for (const char* on : {"name Ponder value TRUE", "Ponder true", "name ponder VALUE True"}) {
    send(std::string("setoption ") + on);
    EXPECT_TRUE(timeControl.canPonder()) << on;
    EXPECT_EQ(logged(), "canponder=1\n");
    send("setoption name Ponder value 1");
    EXPECT_FALSE(timeControl.canPonder());
    EXPECT_EQ(logged(), "canponder=0\n");
  }
  send("setoption name OwnBook value false");
  send("setoption name SendPv value");
  EXPECT_EQ(logged(), "usebook=0\nsendpv=0\n");
}

TEST_F(Options, WeightsArePercentOf1024) {
  const std::pair<const char*, int> cases[] = {
      {"value 150", 1536}, {"value 99", 1013}, {"value 0", 0},  {"1000", 10240},
      {"value", 1024},     {"value high", 0},  {"value -5", 0}, {"value 99999999999", 10240}};
  for (const auto& [value, weight] : cases) {
    send(std::string("setoption name eval.kingattack ") + value);
    EXPECT_EQ(evalTables.weights[KingAttack], weight) << value;
  }
}

TEST_F(Options, EachWeightHasItsOwnName) {
  const char* names[] = {
      "eval.mobility.opening",    "eval.mobility.endgame",      "eval.passedpawns.opening",
      "eval.passedpawns.endgame", "eval.pawnstructure.opening", "EVAL.pawnstructure.endgame",
      "eval.kingattack"};
  for (int i = 0; i < EvalWeightCount; ++i) {
    send(std::string("setoption name ") + names[i] + " value 50");
    for (int j = 0; j < EvalWeightCount; ++j) {
      EXPECT_EQ(evalTables.weights[static_cast<unsigned>(j)], j <= i ? 512 : 1024) << names[i];
    }
  }
}

TEST_F(Options, NumbersAreLoggedAsGivenAndKeptInRange) {
  const struct {
    const char *option, *log;
    int multiPv;
    std::uint64_t megabytes;
    int threads;
  } cases[] = {
      {"MultiPV value 0", "multipv=0\n", 0, 1, 1},
      {"multipv value 999", "multipv=999\n", 256, 1, 1},
      {"MultiPV value", "multipv=1\n", 1, 1, 1},
      // A name is not matched by its beginning.
      {"MultiPVMargin value 5000", "", 1, 1, 1},
      {"Hash value 2", "resizing hash to 2Mb\n", 1, 2, 1},
      // The number is taken for the word "value".
      {"Hash 4", "resizing hash to 32Mb\n", 1, 32, 1},
      {"Hash value 0", "resizing hash to 0Mb\n", 1, 1, 1},
      {"Threads value 3", "setting cpus=3\n", 1, 1, 3},
      {"Threads 3", "setting cpus=1\n", 1, 1, 1},
      {"Threads value -8", "setting cpus=-8\n", 1, 1, 1},
  };
  for (const auto& c : cases) {
    send(std::string("setoption name ") + c.option);
    EXPECT_EQ(logged(), c.log) << c.option;
    EXPECT_EQ(pool.state.multiPv, c.multiPv) << c.option;
    EXPECT_EQ(tt.sizeBytes(), c.megabytes << 20) << c.option;
    EXPECT_EQ(pool.threadCount(), c.threads) << c.option;
  }
  EXPECT_EQ(pool.state.multiPvMargin, 2000);
}

TEST_F(Options, ClearTakesTheWordHashAlone) {
  startSearch("depth 5");
  waitForTheEnd();
  logged();
  send("setoption name Clear value Hash");
  EXPECT_EQ(logged(), "");
  EXPECT_GT(pool.state.ttFilled(), 0u);
  TtEntry entry;
  EXPECT_TRUE(tt.probe(pool.state.master(), entry));
  send("setoption name clear HASH");
  EXPECT_THAT(logged(), MatchesRegex("[0-9]{10}:tt cleared\n"));
  EXPECT_FALSE(tt.probe(pool.state.master(), entry));
}

TEST_F(Options, TheOpponentIsTakenWordByWord) {
  send("setoption name UCI_Opponent value GM 2800 human Gary Kasparov");
  EXPECT_EQ(logged(), "Opponent=GM Gary, human, elo=2800\n");
  send("setoption name UCI_Opponent");
  EXPECT_EQ(logged(), "Opponent= , , elo=0\n");
}

TEST_F(Options, UnknownNamesAreNamed) {
  send("setoption name Contempt value 5");
  send("setoption name UCI_EngineAbout value x");
  send("setoption");
  EXPECT_EQ(errors(),
            "Option not supported: Contempt\nOption not supported: UCI_EngineAbout\n"
            "Option not supported: \n");
  send("setoption name UCI_AnalyseMode value true");
  EXPECT_EQ(errors(), "");
}

TEST_F(Options, WhatASearchUsesStopsItFirst) {
  for (const char* option :
       {"Hash value 2", "Clear Hash", "Threads value 2", "eval.mobility.opening value 90"}) {
    startSearch("infinite");
    send(std::string("setoption name ") + option);
    EXPECT_FALSE(uci.isSearching()) << option;
    EXPECT_THAT(answers(), SizeIs(1)) << option;
    EXPECT_THAT(errors(), HasSubstr("search still running? status=2")) << option;
  }
  send("position startpos");
  send("setoption name Hash value 1");
  EXPECT_EQ(uci.status(), Position) << "without a search the status stays";

  send("go infinite");
  for (const char* option : {"Ponder value true", "OwnBook value false", "SendPv value true",
                             "MultiPV value 3", "MultiPVMargin value 0"}) {
    send(std::string("setoption name ") + option);
    EXPECT_TRUE(uci.isSearching()) << option;
  }
  send("stop");
}

}  // namespace
}  // namespace quill
