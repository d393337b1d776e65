#include "support/book_file.h"
#include "uci/uci_fixture.h"

namespace quill {
namespace {

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using PositionCommand = test::UciTest;

constexpr char AfterE4E5[] = "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2";
constexpr char EndgameFen[] = "8/8/8/3k4/8/3KP3/8/8 b - -";

TEST_F(PositionCommand, PlaysTheMovesOfAGame) {
  send("position startpos moves e2e4 e7e5");
  EXPECT_EQ(fen(), AfterE4E5);
  send("position moves g1f3");
  EXPECT_THAT(fen(), HasSubstr("/5N2/"));
  EXPECT_EQ(pool.board().gamePly(), 3);
  send("position");
  EXPECT_EQ(pool.board().gamePly(), 3);
  EXPECT_THAT(logged(), HasSubstr("uci: 2x position?\n"));
}

TEST_F(PositionCommand, AFenNeedsNoCountersAndEndsAtMoves) {
  send(std::string("POSITION FEN\t") + EndgameFen + "  MOVES d5e5");
  EXPECT_THAT(fen(), HasSubstr("8/8/8/4k3/8/3KP3/8/8 w - -"));
  EXPECT_EQ(errors(), "");
}

TEST_F(PositionCommand, AnUnreadableFenKeepsThePositionWithoutItsMoves) {
  send("position startpos moves e2e4 e7e5");
  send("position fen 8/8/8/8 w - - moves a2a3");
  EXPECT_EQ(fen(), AfterE4E5);
  send("position fen moves a2a3");
  EXPECT_EQ(fen(), AfterE4E5);
  send("position somewhere moves a2a3");
  EXPECT_EQ(fen(), AfterE4E5);
}

TEST_F(PositionCommand, TheFirstInvalidMoveEndsTheList) {
  send("position startpos moves e2e4 e7e5 e2e4 g1f3");
  EXPECT_EQ(fen(), AfterE4E5);
  EXPECT_THAT(errors(), HasSubstr("WARNING invalid move from GUI: e2e4\n"));
  EXPECT_EQ(uci.status(), Position);
}

TEST_F(PositionCommand, ContinuationDotsAreSkipped) {
  send("position startpos moves e2e4 ... e7e5 ..");
  EXPECT_EQ(fen(), AfterE4E5);
  EXPECT_THAT(logged(), HasSubstr("SKIP continuation move: ...\n"));
}

TEST_F(PositionCommand, AGameMayBeOfAnyLength) {
  std::string line = "position startpos moves";
  for (int i = 0; i < 1000; ++i) line += " g1f3 g8f6 f3g1 f6g8";
  send(line + " e2e4 e7e5");
  EXPECT_EQ(errors(), "");
  EXPECT_EQ(pool.board().gamePly(), 4002);
  EXPECT_THAT(fen(), HasSubstr("w KQkq - 0 2002"));
  send("go depth 2");
  waitForTheEnd();
  EXPECT_THAT(answers(), SizeIs(1));
}

TEST_F(PositionCommand, StopsASearchAndIsReadyForTheNext) {
  startSearch("infinite");
  send("position startpos moves e2e4 e7e5");
  EXPECT_EQ(errors(), "uci::position(): search still running? status=2\n");
  EXPECT_THAT(answers(), SizeIs(1));
  EXPECT_EQ(uci.status(), Position);
  EXPECT_EQ(fen(), AfterE4E5);
}

class GoCommand : public test::UciTest {
 protected:
  // Runs "go" with the parameters and ends it at once; the time control keeps what they meant.
  void go(const std::string& parameters) {
    send("position startpos");
    errors();
    send("go " + parameters);
    send("stop");
  }
};

TEST_F(GoCommand, ReadsTheClockOfTheSideToMove) {
  go("wtime 60000 btime 5000");
  EXPECT_EQ(timeControl.phaseTime(3), 3256u);
  go("wtime 300000 winc 2000 btime 1 binc 1");
  EXPECT_EQ(timeControl.phaseTime(3), 20970u);
  go("WTIME 5000 movestogo 1");
  EXPECT_EQ(timeControl.phaseTime(3), 1332u);
  send("position startpos moves e2e4");
  send("go wtime 5 btime 60000 infinite");
  send("stop");
  EXPECT_EQ(timeControl.phaseTime(3), 3256u);
  EXPECT_EQ(errors(), "");
}

TEST_F(GoCommand, LimitsOverrideTheClock) {
  go("movetime 700 wtime 60000");
  EXPECT_EQ(timeControl.phaseTime(3), 700u);
  go("depth 3 nodes 5000000000 wtime 60000");
  EXPECT_EQ(timeControl.depthLimit(), 3);
  EXPECT_EQ(timeControl.phaseNodes(5), 5'000'000'000u);
  EXPECT_EQ(timeControl.phaseTime(3), 3256u);
  go("nodes 1000000 movestogo 10");
  EXPECT_EQ(timeControl.phaseNodes(3), 173610u);
  go("wtime 60000");
  EXPECT_EQ(timeControl.depthLimit(), 0);
  EXPECT_EQ(timeControl.phaseNodes(3), 0u) << "limits end with their search";
}

TEST_F(GoCommand, AKeywordTakesTheNextWordWhateverItIs) {
  go("movetime 900");
  go("wtime btime 60000");  // White's clock reads as 0, and 60000 belongs to nobody
  EXPECT_EQ(timeControl.phaseTime(3), 100u);
  go("movetime 900");
  go("depth 1 wtime");
  EXPECT_EQ(timeControl.phaseTime(3), 900u) << "without a number there is no clock";
  go("movetime -5 wtime 5000 movestogo");
  EXPECT_EQ(timeControl.phaseTime(3), 1332u) << "a negative move time still means one move to go";
  go("wtime 60000 winc -5 depth -1 nodes -1");
  EXPECT_EQ(timeControl.phaseTime(3), 3256u);
  EXPECT_EQ(timeControl.depthLimit(), 0);
  EXPECT_EQ(timeControl.nodeLimit(), 0u);
}

TEST_F(GoCommand, WithoutAnyLimitTheOldBudgetsServe) {
  go("movetime 50");
  logged();
  send("position startpos");
  send("go");
  waitForTheEnd();
  EXPECT_THAT(answers(), SizeIs(2));
  EXPECT_EQ(errors(), "go(): no time/depth/node limit\n");
  EXPECT_THAT(logged(), HasSubstr("Nominal search time is 0.05 seconds, infinite=0, nodes=0\n"));
}

TEST_F(GoCommand, TheLargestNumbersAreHarmless) {
  go("wtime 99999999999 btime 99999999999 winc 99999999999 binc 99999999999 movestogo 99999999999");
  go("movetime 99999999999 depth 99999999999 nodes 99999999999999999999999");
  go("nodes 99999999999999999999999 movestogo 1");
  EXPECT_THAT(answers(), SizeIs(3));
}

// A book for the first moves of an open game.
class BookCommand : public test::UciTest {
 protected:
  BookCommand() {
    const auto add = [this](const char* fenText, const char* move) {
      test::TestRecord record;
      record.key = test::lookupKeyOf(fenText);
      record.move = move;
      record.wins = 100;
      records.push_back(record);
    };
    add(test::StartFen, "e2e4");
    add(AfterE4E5, "g1f3");
    const std::string path = folder.write("test.bbk", test::bookBytes(records, 2));
    EXPECT_TRUE(book.open(path.c_str()));
  }

  std::vector<std::string> goAt(const std::string& moves) {
    send("position startpos moves " + moves);
    send("go depth 1");
    waitForTheEnd();
    const std::string text = out();
    isFromBook = text.find("info") == std::string::npos;
    return {text.substr(text.find("bestmove"))};
  }

  test::TestFolder folder;
  std::vector<test::TestRecord> records;
  bool isFromBook = false;
};

TEST_F(BookCommand, ABookMoveIsAnsweredAtOnce) {
  startSearch("infinite");
  EXPECT_EQ(out(), "bestmove e2e4\n");
  EXPECT_EQ(uci.status(), Finished);
  send("stop");
  EXPECT_EQ(out(), "bestmove e2e4\n") << "asked again, the book's answer is the last one";
  send("ponderhit");
  EXPECT_EQ(out(), "bestmove e2e4\n");

  send("setoption name OwnBook value false");
  goAt("e2e4 e7e5");
  EXPECT_FALSE(isFromBook);
}

TEST_F(BookCommand, TheBookIsAskedUntilSixPliesBehindItsLastMove) {
  const std::string shuffle = " b1c3 b8c6 c3b1 c6b8";
  goAt("e2e4 e7e5");
  EXPECT_TRUE(isFromBook);
  goAt("e2e4 e7e5" + shuffle);  // 4 plies on
  EXPECT_TRUE(isFromBook);
  goAt("e2e4 e7e5" + shuffle + shuffle);
  EXPECT_TRUE(isFromBook) << "each book move renews the window";
  goAt("e2e4 e7e5" + shuffle + shuffle + shuffle + shuffle);  // 8 plies on
  EXPECT_FALSE(isFromBook);
}

TEST_F(BookCommand, ANewGameOpensTheBookAgain) {
  const std::string shuffle = " b1c3 b8c6 c3b1 c6b8";
  const std::string late = "e2e4 e7e5" + shuffle + shuffle + shuffle;
  goAt("e2e4 e7e5");
  goAt("a2a3 e7e5" + shuffle + shuffle + shuffle);  // far behind the book: searched
  ASSERT_FALSE(isFromBook);
  goAt(late);
  ASSERT_FALSE(isFromBook);
  send("ucinewgame");
  goAt(late);
  EXPECT_TRUE(isFromBook);

  goAt("e2e4 e7e5 a2a3 a7a6" + shuffle + shuffle + shuffle + shuffle);
  goAt("e2e4 e7e5");  // the book answers; the window lies here again
  goAt("e2e4 e7e5 a2a3 a7a6" + shuffle + shuffle + shuffle);
  goAt("e2e4 e7e5" + shuffle + shuffle);  // plies before the last "go": a game of its own
  EXPECT_FALSE(isFromBook);
  goAt(late);
  EXPECT_TRUE(isFromBook);
}

}  // namespace
}  // namespace quill
