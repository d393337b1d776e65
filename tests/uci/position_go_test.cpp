#include "support/book_file.h"
#include "uci/uci_fixture.h"

namespace quill {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using PositionCommand = test::UciTest;

constexpr char AfterE4E5[] = "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2";

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

TEST_F(PositionCommand, WhatMakesNoSenseIsLeftOut) {
  const struct {
    const char *line, *fen;
    testing::Matcher<std::string> errors;
  } cases[] = {
      {"POSITION FEN\t8/8/8/3k4/8/3KP3/8/8 b - -  MOVES d5e5", "8/8/8/4k3/8/3KP3/8/8 w - - 1 1",
       IsEmpty()},
      // The first invalid move ends the list.
      {"position startpos moves e2e4 e7e5 e2e4 g1f3", AfterE4E5,
       HasSubstr("WARNING invalid move from GUI: e2e4\n")},
      // An unreadable position keeps the one before, without the moves.
      {"position fen 8/8/8/8 w - - moves a2a3", AfterE4E5, testing::_},
      {"position fen moves a2a3", AfterE4E5, testing::_},
      {"position somewhere moves a2a3", AfterE4E5, testing::_},
      {"position startpos moves e2e4 ... e7e5 ..", AfterE4E5, IsEmpty()},
  };
  for (const auto& c : cases) {
    send(c.line);
    EXPECT_EQ(fen(), c.fen) << c.line;
    EXPECT_THAT(errors(), c.errors) << c.line;
    EXPECT_EQ(uci.status(), Position) << c.line;
  }
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
  EXPECT_EQ(fen(), AfterE4E5);
}

class GoCommand : public test::UciTest {};

TEST_F(GoCommand, ReadsTheClockOfTheSideToMoveAndTheLimits) {
  const struct {
    const char* parameters;
    std::uint32_t time;  // of the normal phase
    int depth;
    std::uint64_t nodes;  // of the normal phase
  } cases[] = {
      {"wtime 60000 btime 5000", 3256, 0, 0},
      {"wtime 300000 winc 2000 btime 1 binc 1", 20970, 0, 0},
      {"WTIME 5000 movestogo 1", 1332, 0, 0},
      {"movetime 700 wtime 60000", 700, 0, 0},
      {"depth 3 nodes 5000000000 wtime 60000", 3256, 3, 5'000'000'000},
      {"nodes 1000000 movestogo 10", 3256, 0, 173610},
      // Limits end with their search; those below zero limit nothing.
      {"wtime 60000 winc -5 depth -1 nodes -1", 3256, 0, 0},
      // A keyword takes the next word whatever it is: White's clock reads as 0.
      {"wtime btime 60000", 100, 0, 0},
      {"movetime 900", 900, 0, 0},
      // Without a number there is no clock.
      {"depth 1 wtime", 900, 1, 0},
      // A negative move time still means one move to go.
      {"movetime -5 wtime 5000 movestogo", 1332, 0, 0},
  };
  for (const auto& c : cases) {
    startSearch(c.parameters);
    send("stop");
    EXPECT_EQ(timeControl.phaseTime(NormalPhase), c.time) << c.parameters;
    EXPECT_EQ(timeControl.depthLimit(), c.depth) << c.parameters;
    EXPECT_EQ(timeControl.phaseNodes(NormalPhase), c.nodes) << c.parameters;
  }
  send("position startpos moves e2e4");
  send("go wtime 5 btime 60000 infinite");
  EXPECT_EQ(timeControl.phaseTime(NormalPhase), 3256u);
  send("stop");
}

TEST_F(GoCommand, WithoutAnyLimitTheOldBudgetsServe) {
  startSearch("movetime 50");
  send("position startpos");
  errors();
  send("go");
  waitForTheEnd();
  EXPECT_THAT(answers(), SizeIs(2));
  EXPECT_EQ(errors(), "go(): no time/depth/node limit\n");
  EXPECT_THAT(logged(), HasSubstr("Nominal search time is 0.05 seconds, infinite=0, nodes=0\n"));
  startSearch("nodes 20000 movestogo 10 depth \r 12");
  EXPECT_THAT(logged(), HasSubstr("Nominal search time is 0.05 seconds, infinite=0, nodes=3472\n"));
  EXPECT_EQ(timeControl.depthLimit(), 0) << "a carriage return is a word, and no number";
  send("stop");
}

TEST_F(GoCommand, TheLargestNumbersAreHarmless) {
  for (const char* name : {"wtime", "winc", "movestogo", "movetime", "depth", "nodes"}) {
    startSearch(std::string("wtime 99999999999 ") + name + " 99999999999999999999999 infinite");
    send("stop");
    EXPECT_THAT(answers(), SizeIs(1)) << name;
  }
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

  // Whether the book answers behind these moves.
  bool isFromBook(const std::string& moves) {
    send("position startpos moves " + moves);
    send("go depth 1");
    waitForTheEnd();
    return out().find("info") == std::string::npos;
  }

  // The open game with so many plies of knight moves behind it.
  static std::string openGame(int plies) {
    std::string moves = "e2e4 e7e5";
    for (; plies > 0; plies -= 4) moves += " b1c3 b8c6 c3b1 c6b8";
    return moves;
  }

  test::TestFolder folder;
  std::vector<test::TestRecord> records;
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
  EXPECT_FALSE(isFromBook("e2e4 e7e5"));
}

TEST_F(BookCommand, TheBookIsAskedUntilSixPliesBehindItsLastMove) {
  EXPECT_TRUE(isFromBook(openGame(0)));
  EXPECT_TRUE(isFromBook(openGame(4)));
  EXPECT_TRUE(isFromBook(openGame(8))) << "each book move renews the window";
  EXPECT_FALSE(isFromBook(openGame(16)));
}

TEST_F(BookCommand, ANewGameOpensTheBookAgain) {
  EXPECT_TRUE(isFromBook(openGame(0)));
  EXPECT_FALSE(isFromBook(openGame(12) + " a2a3"));
  EXPECT_FALSE(isFromBook(openGame(12)));
  send("ucinewgame");
  EXPECT_TRUE(isFromBook(openGame(12)));

  EXPECT_TRUE(isFromBook(openGame(0)));  // the window lies here again
  EXPECT_FALSE(isFromBook(openGame(12) + " a2a3"));
  // Plies before the last "go": a game of its own.
  EXPECT_FALSE(isFromBook(openGame(8)));
  EXPECT_TRUE(isFromBook(openGame(12)));
}

}  // namespace
}  // namespace quill
