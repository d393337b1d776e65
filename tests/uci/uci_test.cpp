#include "uci/uci.h"

#include "platform/thread.h"
#include "shell/log.h"
#include "support/regex.h"
#include "uci/uci_fixture.h"

namespace quill {
namespace {

using test::ContainsRegex;
using test::MatchesRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using Commands = test::UciTest;

constexpr char Announcement[] =
    "\n"
    "id name quill-1.0\n"
    "id author Orvelle\n"
    "option name UCI_EngineAbout type string default quill-1.0 by Orvelle\n"
    "option name UCI_Opponent    type string\n"
    "option name UCI_AnalyseMode type check default false\n"
    "option name Threads         type spin   default 2 min 1 max 16\n"
    "option name Hash            type spin   default 32 min 1 max 4096\n"
    "option name Ponder          type check  default true\n"
    "option name MultiPV         type spin   default 1 min 1 max 256\n"
    "option name MultiPVMargin   type spin   default 100 min 0 max 2000\n"
    "option name OwnBook         type check  default true\n"
    "option name eval.mobility.opening      type spin default 100 min 0 max 1000\n"
    "option name eval.mobility.endgame      type spin default 100 min 0 max 1000\n"
    "option name eval.passedpawns.opening   type spin default 100 min 0 max 1000\n"
    "option name eval.passedpawns.endgame   type spin default 100 min 0 max 1000\n"
    "option name eval.pawnstructure.opening type spin default 100 min 0 max 1000\n"
    "option name eval.pawnstructure.endgame type spin default 100 min 0 max 1000\n"
    "option name eval.kingattack            type spin default 100 min 0 max 1000\n"
    "uciok\n";

TEST_F(Commands, UciAnnouncesTheEngineAndSilencesTheLog) {
  send("setoption name Threads value 2");
  out();
  EXPECT_FALSE(uci.uciMode());
  EXPECT_TRUE(send("UCI"));
  EXPECT_EQ(out(), Announcement);
  EXPECT_TRUE(uci.uciMode());
  EXPECT_EQ(logStream(), nullptr);
}

TEST_F(Commands, WordsOfOthersAreDeclined) {
  EXPECT_FALSE(send("perft 3"));
  EXPECT_FALSE(send(""));
  EXPECT_EQ(errors(), "");
  send("uci");
  EXPECT_FALSE(send("perft 3"));
  EXPECT_EQ(errors(), "unknown uci command: perft\n");
  EXPECT_TRUE(send("")) << "an empty line is nobody else's business under a GUI";
}

TEST_F(Commands, IsreadyAnswersAtOnce) {
  send("IsReady");
  EXPECT_EQ(out(), "readyok\n");
  EXPECT_THAT(logged(), MatchesRegex("[0-9]{10}:<--readyok\n"));
  startSearch("infinite");
  send("isready");
  EXPECT_THAT(out(), ContainsRegex("(^|\n)readyok\n"));
  send("stop");
}

TEST_F(Commands, StopWithoutASearchAnswersNullMove) {
  send("position startpos");
  send("stop");
  EXPECT_EQ(out(), "bestmove 0000\n");
  EXPECT_EQ(errors(), "uci:: stop without preceeding go?\nNo move generated! bm=0\n");
  EXPECT_EQ(uci.status(), Finished);
}

TEST_F(Commands, StopBehindAnAnswerRepeatsTheMoveAlone) {
  startSearch("depth 4");
  waitForTheEnd();
  const auto first = answers();
  ASSERT_THAT(first, SizeIs(1));
  ASSERT_THAT(first[0], MatchesRegex("bestmove [a-h][1-8][a-h][1-8] ponder [a-h][1-8][a-h][1-8]"));
  send("stop");
  EXPECT_THAT(answers(), ElementsAre(first[0].substr(0, first[0].find(" ponder"))));
}

TEST_F(Commands, TheAnswerOfAPonderSearchWaitsForPonderhitOrStop) {
  const std::pair<const char*, const char*> cases[] = {{"ponderhit", "bestmove .... ponder ...."},
                                                       {"stop", "bestmove ...."}};
  for (const auto& [command, expected] : cases) {
    startSearch("ponder nodes 2000");
    waitForTheEnd();
    EXPECT_THAT(answers(), IsEmpty()) << command;
    EXPECT_EQ(uci.status(), Withheld) << command;
    send(command);
    EXPECT_THAT(answers(), ElementsAre(MatchesRegex(expected))) << command;
    EXPECT_EQ(uci.status(), Finished) << command;
  }
}

TEST_F(Commands, AWithheldAnswerIsSentBeforeTheNextPositionOrGo) {
  for (const char* next : {"position startpos", "go nodes 2000"}) {
    startSearch("ponder nodes 2000");
    waitForTheEnd();
    EXPECT_THAT(answers(), IsEmpty()) << next;
    send(next);
    waitForTheEnd();
    const std::size_t expected = *next == 'g' ? 2 : 1;
    EXPECT_THAT(answers(), SizeIs(expected)) << next;
    send("position startpos");
    EXPECT_THAT(answers(), IsEmpty()) << next;
  }
}

TEST_F(Commands, PonderhitMakesTheSearchATimedOne) {
  startSearch("ponder movetime 50");
  EXPECT_EQ(uci.status(), Pondering);
  EXPECT_TRUE(timeControl.infinite());
  send("ponderhit");
  EXPECT_EQ(errors(), "");
  waitForTheEnd();
  EXPECT_THAT(answers(), SizeIs(1));
  EXPECT_FALSE(timeControl.infinite());
}

TEST_F(Commands, PonderhitEndsASearchThatHasNothingMoreToFind) {
  send("position fen 7k/8/5KQ1/8/8/8/8/8 w - - 0 1");  // mate in one
  send("go ponder wtime 10000000 btime 10000000");
  while (pool.state.stopReason.load() == StopNone && uci.isSearching()) platform::yieldThread();
  send("ponderhit");
  EXPECT_FALSE(uci.isSearching());
  EXPECT_THAT(answers(), SizeIs(1));
}

TEST_F(Commands, PonderhitOutOfPlaceChangesNothing) {
  send("position startpos");
  send("ponderhit");
  EXPECT_EQ(out(), "bestmove 0000\n");
  EXPECT_EQ(errors(),
            "uci:: ponderhit without preceeding go(): send bestmove 0000\n"
            "No move generated! bm=0\n");
  EXPECT_EQ(uci.status(), Position);

  send("go infinite");
  send("ponderhit");
  EXPECT_EQ(errors(), "uci::ponderhit status==SEARCHING, ponderhit ignored\n");
  EXPECT_EQ(uci.status(), Searching);
  EXPECT_TRUE(uci.isSearching());
  send("stop");
  EXPECT_THAT(answers(), SizeIs(1));
}

TEST_F(Commands, EveryGoGetsOneAnswer) {
  send("position startpos");
  for (int i = 0; i < 20; ++i) send("go infinite");
  send("stop");
  EXPECT_THAT(answers(), SizeIs(20));
  EXPECT_THAT(errors(), HasSubstr("Expected current status==POSITION, got 2\n"));

  for (int i = 0; i < 50; ++i) {
    startSearch("movetime 1");
    if (i % 3 != 0) waitForTheEnd();
  }
  waitForTheEnd();
  EXPECT_THAT(answers(), SizeIs(50));
}

TEST_F(Commands, NoLegalMoveIsAnsweredAtOnce) {
  send("position fen 7k/5KQ1/8/8/8/8/8/8 b - - 0 1");
  send("go infinite");
  waitForTheEnd();
  EXPECT_THAT(out(), MatchesRegex("info depth 0 .*\nbestmove 0000\n"));
}

TEST_F(Commands, TheLastBlockComesWithoutVariationsToo) {
  send("setoption name SendPv value false");
  startSearch("depth 5");
  waitForTheEnd();
  EXPECT_THAT(out(),
              MatchesRegex("info depth 5 seldepth [0-9]+ score cp -?[0-9]+ time [0-9]+ nodes "
                           "[0-9]+( nps [0-9]+)? hashfull [0-9]+\nbestmove .*\n"));
}

TEST_F(Commands, TheEndOfInputLetsALimitedSearchAnswer) {
  startSearch("movetime 100");
  uci.finish();
  EXPECT_THAT(answers(), SizeIs(1));
  EXPECT_GE(timeControl.elapsed(), 60u);
}

}  // namespace
}  // namespace quill
