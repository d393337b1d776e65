#include "uci/profile.h"

#include "shell/log.h"
#include "uci/uci_fixture.h"

namespace quill {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

constexpr char BareKings[] = "position fen 8/8/4k3/8/8/4K3/8/8 w - - 0 1";

class ModernProfileTest : public test::UciTest {
 protected:
  ModernProfileTest() { uci.setProfile(ModernProfile); }
};

TEST_F(ModernProfileTest, TheAnswerOfAnInfiniteSearchWaitsForACommandThatEndsIt) {
  // The command, and how many searches it has seen by its end.
  const std::pair<const char*, std::size_t> cases[] = {
      {"stop", 1}, {"position startpos", 1}, {"go depth 2", 2}, {nullptr, 1}};  // the end of input
  for (const auto& [command, searches] : cases) {
    send(BareKings);
    send("go infinite");
    waitForTheEnd();
    send("ponderhit");
    EXPECT_EQ(uci.status(), Analysed);
    EXPECT_THAT(answers(), IsEmpty());
    if (command != nullptr) {
      send(command);
      waitForTheEnd();
    } else {
      uci.finish();
    }
    EXPECT_THAT(answers(), SizeIs(searches)) << command;
  }
}

TEST_F(ModernProfileTest, ASearchThatRunsIsStoppedByWhatFollows) {
  const std::pair<const char*, UciStatus> cases[] = {{"position startpos", Position},
                                                     {"ucinewgame", Finished},
                                                     {"setoption name Hash value 1", Finished},
                                                     {"stop", Finished}};
  for (const char* search : {"infinite", "", "ponder", "searchmoves e2e4 d2d4", "mate 9"}) {
    for (const auto& [command, status] : cases) {
      startSearch(search);
      send(command);
      EXPECT_THAT(answers(), SizeIs(1)) << search << ", " << command;
      EXPECT_EQ(uci.status(), status) << search << ", " << command;
      EXPECT_FALSE(uci.isSearching());
    }
  }
  startSearch("searchmoves e2e4 d2d4");
  uci.finish();
  EXPECT_THAT(answers(), SizeIs(1)) << "it has no end of its own";
}

TEST_F(ModernProfileTest, AnAnswerIsSentOnce) {
  const auto expectSilence = [this] {
    for (const char* command : {"stop", "ponderhit", "stop"}) send(command);
    EXPECT_EQ(out(), "");
    EXPECT_EQ(errors(), "");
  };
  expectSilence();
  send("position startpos");
  expectSilence();
  EXPECT_EQ(uci.status(), Position);

  for (const char* command : {"ponderhit", "stop"}) {
    startSearch("ponder nodes 3000");
    waitForTheEnd();
    EXPECT_THAT(answers(), IsEmpty());
    send(command);
    EXPECT_THAT(answers(), ElementsAre(MatchesRegex("bestmove .... ponder ...."))) << command;
    expectSilence();
  }
}

TEST_F(ModernProfileTest, WhatIsNotNamedDoesNotLimit) {
  constexpr std::uint32_t None = TimeControl::NoLimit;
  const struct {
    const char* parameters;
    bool infinite;
    std::uint32_t leastTime;  // ms, normal phase
    std::uint32_t mostTime;
    int depth;
  } cases[] = {
      {"movetime 1", false, 0, 0, 1},  // nothing is left of it; the next ones don't care
      {"depth 3", false, None, None, 3},
      {"nodes 3000", false, None, None, 0},
      {"mate 2", false, None, None, 0},
      {"ponder", true, None, None, 0},
      {"ponder depth 3", true, None, None, 3},
      {"wtime", true, 0, None, 0},
      {"searchmoves e2e4", true, 0, None, 0},
      {"searchmoves e2e5 depth 3", false, None, None, 3},
      {"wtime -9 btime 60000 depth 4", false, 0, 0, 1},
      {"movetime -9", false, 0, 0, 1},
      // One clock stands for both.
      {"btime 60000", false, 500, 10000, 0},
  };
  for (const auto& c : cases) {
    startSearch(c.parameters);
    EXPECT_EQ(timeControl.infinite(), c.infinite) << c.parameters;
    EXPECT_GE(timeControl.phaseTime(NormalPhase), c.leastTime) << c.parameters;
    EXPECT_LE(timeControl.phaseTime(NormalPhase), c.mostTime) << c.parameters;
    EXPECT_EQ(timeControl.depthLimit(), c.depth) << c.parameters;
    send("stop");
    EXPECT_THAT(answers(), SizeIs(1)) << c.parameters;
  }
  // Words behind the moves are read, and each move counts once.
  startSearch("searchmoves e2e4 d2d4 e2e4 e1g1 e7e8q depth 3");
  waitForTheEnd();
  EXPECT_EQ(pool.state.rootMoves.count, 2u);
  EXPECT_EQ(timeControl.depthLimit(), 3);
}

TEST_F(ModernProfileTest, ANewGameForgetsWhatEarlierOnesFound) {
  TtEntry entry;
  for (const bool isModern : {false, true}) {
    uci.setProfile(isModern ? ModernProfile : ClassicProfile);
    startSearch("depth 5");
    waitForTheEnd();
    EXPECT_TRUE(tt.probe(pool.state.master(), entry));
    send("ucinewgame");
    EXPECT_EQ(tt.probe(pool.state.master(), entry), !isModern);
  }
}

TEST_F(ModernProfileTest, ClassicKnowsNothingOfIt) {
  uci.setProfile(ClassicProfile);
  EXPECT_FALSE(send("debug on"));
  for (const char* option : {"Book File value x", "Move Overhead value 9"}) {
    send(std::string("setoption name ") + option);
    EXPECT_THAT(errors(), HasSubstr("Option not supported: ")) << option;
  }
  EXPECT_EQ(uci.options().overhead(), 0u);
}

}  // namespace
}  // namespace quill
