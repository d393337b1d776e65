#include "uci/options.h"

#include "uci/uci_fixture.h"

namespace quill {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::MatchesRegex;
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
  const auto set = [this](const std::string& value) {
    send("setoption name eval.kingattack " + value);
    return evalTables.weights[KingAttack];
  };
  EXPECT_EQ(set("value 150"), 1536);
  EXPECT_EQ(set("value 99"), 1013);
  EXPECT_EQ(set("value 0"), 0);
  EXPECT_EQ(set("1000"), 10240);
  EXPECT_EQ(set("value"), 1024);
  EXPECT_EQ(set("value high"), 0);
  EXPECT_EQ(set("value -5"), 0);
  EXPECT_EQ(set("value 99999999999"), 10240);
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
  send("setoption name MultiPV value 0");
  EXPECT_EQ(pool.state.multiPv, 0);
  send("setoption name multipv value 999");
  EXPECT_EQ(pool.state.multiPv, 256);
  send("setoption name MultiPV value");
  EXPECT_EQ(pool.state.multiPv, 1);
  EXPECT_EQ(logged(), "multipv=0\nmultipv=999\nmultipv=1\n");
  send("setoption name MultiPVMargin value 5000");
  EXPECT_EQ(pool.state.multiPvMargin, 2000);
  EXPECT_EQ(pool.state.multiPv, 1) << "a name is not matched by its beginning";
  EXPECT_EQ(logged(), "");
}

TEST_F(Options, HashAndThreadsSkipOneWordUnseen) {
  send("setoption name Hash value 2");
  EXPECT_EQ(tt.sizeBytes(), 2u << 20);
  send("setoption name Hash 4");
  EXPECT_EQ(tt.sizeBytes(), 32u << 20) << "the number was taken for the word \"value\"";
  send("setoption name Hash value 0");
  EXPECT_EQ(tt.sizeBytes(), 1u << 20);
  EXPECT_EQ(logged(), "resizing hash to 2Mb\nresizing hash to 32Mb\nresizing hash to 0Mb\n");
  send("setoption name Threads value 3");
  EXPECT_EQ(pool.threadCount(), 3);
  send("setoption name Threads 3");
  EXPECT_EQ(pool.threadCount(), 1);
  send("setoption name Threads value -8");
  EXPECT_EQ(pool.threadCount(), 1);
  EXPECT_EQ(logged(), "setting cpus=3\nsetting cpus=1\nsetting cpus=-8\n");
}

TEST_F(Options, ClearTakesTheWordHashAlone) {
  const auto filled = [this] {
    startSearch("depth 5");
    waitForTheEnd();
    logged();
    return pool.state.ttFilled() > 0;
  };
  ASSERT_TRUE(filled());
  send("setoption name Clear value Hash");
  EXPECT_EQ(logged(), "");
  send("setoption name clear HASH");
  EXPECT_THAT(logged(), MatchesRegex("[0-9]{10}:tt cleared\n"));
  TtEntry entry;
  send("position startpos");
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
