#include "quill_book/pgn_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace quill::test {
namespace {

std::vector<PgnGame> readAll(const std::string& text, int maxPly = 100) {
  std::istringstream in(text);
  PgnReader reader(in, maxPly);
  std::vector<PgnGame> games(1);
  while (reader.next(games.back())) games.emplace_back();
  games.pop_back();
  return games;
}

std::string movesOf(const PgnGame& game) {
  std::string text;
  for (const PgnMove& move : game.moves) {
    if (!text.empty()) text += ' ';
    text += move.text;
  }
  return text;
}

// The moves of the only game in the text.
std::string movesOf(const std::string& text) {
  const std::vector<PgnGame> games = readAll(text);
  if (games.size() != 1) return std::to_string(games.size()) + " games";
  return games[0].error ? games[0].error->reason : movesOf(games[0]);
}

std::string errorOf(const std::string& text) {
  const std::vector<PgnGame> games = readAll(text);
  if (games.empty() || !games[0].error) return "none";
  return std::to_string(games[0].error->line) + ": " + games[0].error->reason;
}

TEST(PgnReader, MainLineIsFoundAmongEverythingElse) {
  for (const char* text : {
           "1. e4 e5 2. Nf3 *",
           "1.e4 e5 2.Nf3",
           "1 e4 1... e5 2.Nf3 1/2-1/2",
           "1. e4 {a {comment} 1... e5 2. Nf3 {1. d4 (d5} 1-0",
           "1. e4 {over\n[Site \"lines\"]\n} 1... e5 ; to the end 3. d4 }\n2. Nf3 0-1",
           "1. e4 (1. d4 d5 (1... Nf6 {)} 2. c4 ; )\n) 2. c4) e5 2. Nf3",
           "1. e4 $1 e5 $14 $2 2. Nf3$255 +- = +/= !? N \xC2\xB1 *",
           "% 1. d4\n1. e4\n% d5\ne5 2. Nf3\n%",
           "1. e4\r\ne5\r\n; d4\r\n2. Nf3\r\n1-0\r\n",
           "1. e4\re5\r; d4\r2. Nf3\r1-0\r",
           "\xEF\xBB\xBF"
           "1. e4 e5 2. Nf3 1-0",
           "1.\te4\n\n\n 1...e5 2.\n...\nNf3",
       }) {
    EXPECT_EQ(movesOf(text), "e4 e5 Nf3") << text;
  }
}

TEST(PgnReader, MoveTextsAreBroughtIntoTheEnginesForm) {
  EXPECT_EQ(movesOf("1. e4! e5?! 2. O-O 0-0 3. 0-0-0+ exd6e.p. 4. fxe6 e.p. e8=Q#"),
            "e4! e5?! O-O O-O O-O-O+ exd6 fxe6 e8=Q#");
}

TEST(PgnReader, TagsAreRead) {
  const auto games = readAll(
      "[Event \"The \"Big\" one]\"]\n[Site \"a\"] [Result \"0-1\"]\n  [FEN \"8/8 w - -\" ]\n"
      "[Annotator \"no end\n[WhiteElo \"2701\"]\n[BlackElo \"?\"]\n[Variant "
      "\"a\\\"b\"]\n[]\n[X]\n\ne4 *");
  ASSERT_EQ(games.size(), 1u);
  EXPECT_EQ(games[0].fen, "8/8 w - -");
  EXPECT_EQ(games[0].result, GameResult::BlackWins);
  EXPECT_EQ(games[0].whiteElo, 2701);
  EXPECT_EQ(games[0].blackElo, 0);
  EXPECT_EQ(games[0].variant, "a\"b");
  EXPECT_EQ(movesOf(games[0]), "e4");
}

TEST(PgnReader, ResultOfTheMoveTextGoesBeforeTheTag) {
  const auto resultOf = [](const std::string& tag, const std::string& end) {
    return readAll("[Event \"x\"]\n[Result \"" + tag + "\"]\n\n1. e4 " + end).at(0).result;
  };
  EXPECT_EQ(resultOf("1-0", "0-1"), GameResult::BlackWins);
  EXPECT_EQ(resultOf("1-0", "*"), GameResult::WhiteWins);
  EXPECT_EQ(resultOf("1-0", ""), GameResult::WhiteWins);
  EXPECT_EQ(resultOf("*", "1/2-1/2"), GameResult::Draw);
  EXPECT_EQ(resultOf("*", ""), GameResult::Unknown);
}

TEST(PgnReader, GamesArePartedWhereverTheyEnd) {
  const auto games = readAll(
      "[Event \"1\"]\n\n1. a3\n\n"                   // no result
      "[Event \"2\"]\n\n"                            // no moves
      "[Event \"3\"]\n[Site \"\"]\n1. a4 1-0 1-0\n"  // no empty line, result twice
      "1. b3 0-1 1. b4 *\n"                          // no tags
      "[Site \"\"]\n\n1. c3 c6\n");                  // the end of the file
  std::string all;
  for (const PgnGame& game : games) {
    all += '|';
    all += std::to_string(game.line);
    all += ' ';
    all += movesOf(game);
  }
  EXPECT_EQ(all, "|1 a3|5 |7 a4|10 b3|10 b4|11 c3 c6");
  EXPECT_TRUE(readAll("").empty());
  EXPECT_TRUE(readAll("\n \n% x\n1-0\n* 1/2-1/2").empty());
}

TEST(PgnReader, FaultsAreReportedWithTheirLine) {
  EXPECT_EQ(errorOf("1. e4\ne5 -- 2. d4"), "2: null move");
  EXPECT_EQ(errorOf("1. e4\n\n) e5"), "3: stray ')'");
  EXPECT_EQ(errorOf("1. e4 }"), "1: stray '}'");
  EXPECT_EQ(errorOf("1. e4 [Event \"?\"]"), "1: stray '['");
  EXPECT_EQ(errorOf("1. e4\n{ never\nclosed"), "2: comment without end");
  EXPECT_EQ(errorOf("1. e4\n(((\n1. d4"), "2: variation without end");
  EXPECT_EQ(errorOf("1. e4 (1. d4 { ) "), "1: comment without end");
  EXPECT_EQ(errorOf("\n1. aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa\x01"),
            "2: not a move: aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa");
}

TEST(PgnReader, FaultyGameDoesNotTakeTheNextOnesWithIt) {
  for (const char* fault : {"{", "(", "((( {", ")", "--", "{ [Event", "\x01\xFF"}) {
    const auto games = readAll(std::string("[Event \"1\"]\n\n1. e4 ") + fault +
                               "\n\n[Event \"2\"]\n\n1. d4 1-0\n");
    ASSERT_EQ(games.size(), 2u) << fault;
    EXPECT_EQ(movesOf(games[1]), "d4") << fault;
    EXPECT_FALSE(games[1].error) << fault;
  }
}

TEST(PgnReader, LongTextsAreReadInPieces) {
  // The comment puts the move texts across the ends of the blocks that the reader takes in.
  for (std::size_t length = 65520; length < 65545; ++length) {
    std::string text(length, 'x');
    text[0] = '{';
    text += "}\r\n1. e4 e5\r\n2. Nf3 {" + std::string(70000, '\n') + "} 1-0";
    ASSERT_EQ(movesOf(text), "e4 e5 Nf3") << length;
  }
}

TEST(PgnReader, WhatFollowsTheMovesThatAreKeptDoesNoHarm) {
  for (const char* rest : {"d5 3. nonsense", "--", "averyverylongword", ") ]", "d5 [Round"}) {
    const auto games = readAll(std::string("1. e4 e5 2. d4 ") + rest + " 1-0 1. c4 *", 3);
    ASSERT_EQ(games.size(), 2u) << rest;
    EXPECT_FALSE(games[0].error) << rest << ": " << games[0].error->reason;
    EXPECT_EQ(movesOf(games[0]), "e4 e5 d4") << rest;
    EXPECT_EQ(games[0].result, GameResult::WhiteWins) << rest;
  }
  EXPECT_TRUE(readAll("1. e4 { 1-0", 1).at(0).error) << "the comment may hide other games";
}

}  // namespace
}  // namespace quill::test
