#include "quill_book/book_builder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>

#include "quill_book/book_check.h"
#include "support/book_file.h"
#include "support/random_positions.h"

namespace quill::test {
namespace {

constexpr char AfterE4[] = "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 1";

// What the check says about the file, on one line for each fault.
std::string complaintsOf(const std::string& path) {
  Capture out;
  checkBook(path, out.stream());
  return out.text();
}

class BookMaking : public testing::Test {
 protected:
  void make(const std::string& pgn, const BookOptions& options = {}) {
    std::istringstream in(pgn);
    PgnReader reader(in, options.maxPly);
    BookBuilder builder(options);
    errors.clear();
    for (PgnGame game; reader.next(game);) {
      if (const auto error = builder.add(game)) {
        errors.push_back(std::to_string(error->line) + ": " + error->reason);
      }
    }
    games = builder.gamesCounted();
    withoutResult = builder.gamesWithoutResult();
    ASSERT_FALSE(book.open(nullptr));  // closed: Windows does not replace an open file
    ASSERT_TRUE(builder.write(path));
    ASSERT_TRUE(book.open(path.c_str()));
    EXPECT_EQ(complaintsOf(path), "");
  }

  // The moves of a position as "move wins/draws/losses".
  std::string held(const char* fen) {
    book.loadCandidates(fen);
    std::string text;
    for (const BookEntry& e : book.candidates()) {
      text += Book::moveText(e).data();
      for (const auto n : {e.wins, e.draws, e.losses}) {
        text += '/';
        text += std::to_string(n);
      }
      text += ' ';
    }
    return text;
  }

  TestFolder folder;
  std::string path = folder.file("made.bbk");
  Book book;
  std::vector<std::string> errors;
  std::uint64_t games = 0;
  std::uint64_t withoutResult = 0;
};

TEST_F(BookMaking, ResultsAreCountedFromTheMoversView) {
  const std::string pgn =
      "1. e4 e5 1-0  1. e4 e5 1-0  1. e4 c5 0-1  1. e4 1/2-1/2  1. d4 0-1 1. c4 c5 *";
  make(pgn);
  EXPECT_EQ(held(StartFen), "e2e4/2/1/1 d2d4/0/0/1 ");
  EXPECT_EQ(held(AfterE4), "e7e5/0/0/2 c7c5/1/0/0 ");
  EXPECT_EQ(games, 5u);
  EXPECT_EQ(withoutResult, 1u);
  BookOptions options;
  options.withUnfinished = true;
  make(pgn, options);
  EXPECT_EQ(held(StartFen), "e2e4/2/1/1 c2c4/0/1/0 d2d4/0/0/1 ");
  EXPECT_EQ(held("rnbqkbnr/pppppppp/8/8/2P5/8/PP1PPPPP/RNBQKBNR b KQkq -"), "c7c5/0/1/0 ");
  EXPECT_EQ(games, 6u);
  EXPECT_EQ(withoutResult, 1u);
}

TEST_F(BookMaking, SpecialMovesAreStoredByTheSquaresOfTheMovingPiece) {
  make("1. e4 Nf6 2. e5 d5 3. exd6 Nc6 4. Nf3 Nb8 5. Be2 Nc6 6. O-O 1-0");
  EXPECT_EQ(held("rnbqkb1r/ppp1pppp/5n2/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 3"), "e5d6/1/0/0 ");
  EXPECT_EQ(held("rnbqkb1r/ppp1pppp/5n2/3pP3/8/8/PPPP1PPP/RNBQKBNR w KQkq - 0 3"), "");
  EXPECT_EQ(held("r1bqkb1r/ppp1pppp/2nP1n2/8/8/5N2/PPPPBPPP/RNBQK2R w KQkq -"), "e1g1/1/0/0 ");
  constexpr char Promotion[] = "8/P6k/8/8/8/8/7K/8 w - - 0 1";
  make(
      "[FEN \"8/P6k/8/8/8/8/7K/8 w - - 0 1\"]\n\n1. a8=N Kg7 1-0\n"
      "[FEN \"8/P6k/8/8/8/8/7K/8 w - - 0 1\"]\n\n1. a8=Q Kg7 1/2-1/2\n");
  EXPECT_EQ(held(Promotion), "a7a8/0/1/0 ") << "no letter means a queen";
  EXPECT_EQ(held("N7/7k/8/8/8/8/7K/8 b - -"), "h7g7/0/0/1 ");
}

TEST_F(BookMaking, OptionsBoundWhatIsHeld) {
  const std::string pgn = "1. e4 e5 2. d4 1-0 1. e4 c5 1-0 1. d4 1-0";
  BookOptions options;
  options.minGames = 2;
  make(pgn, options);
  EXPECT_EQ(held(StartFen) + held(AfterE4), "e2e4/2/0/0 ");
  options = {};
  options.maxPly = 1;
  make(pgn, options);
  EXPECT_EQ(held(StartFen) + held(AfterE4), "e2e4/2/0/0 d2d4/1/0/0 ");
}

TEST_F(BookMaking, RatingIsTheAverageOfThoseWhoChoseTheMove) {
  BookOptions options;
  options.withElo = true;
  make(
      "[WhiteElo \"2400\"]\n[BlackElo \"2900\"]\n\n1. e4 e5 1-0\n"
      "[WhiteElo \"2540\"]\n\n1. e4 e5 1-0\n[WhiteElo \"?\"]\n\n1. e4 1-0\n",
      options);
  ASSERT_EQ(book.loadCandidates(StartFen), 1);
  EXPECT_FLOAT_EQ(book.candidates()[0].strength, 2.0f);  // 2470
  ASSERT_EQ(book.loadCandidates(AfterE4), 1);
  EXPECT_NEAR(book.candidates()[0].strength, std::exp2(500 / 70.0), 1e-3);
  make("1. e4 1-0", options);
  ASSERT_EQ(book.loadCandidates(StartFen), 1);
  EXPECT_LT(book.candidates()[0].strength, 1e-9f) << "an unknown rating is written as 0";
}

TEST_F(BookMaking, LargeCountsAreScaledDownTogether) {
  std::string pgn;
  for (int i = 0; i < 131070; ++i) pgn += "e4 1-0\n";
  for (int i = 0; i < 1001; ++i) pgn += "e4 0-1\n";
  for (int i = 0; i < 200; ++i) pgn += "d4 1/2-1/2\n";
  make(pgn);
  EXPECT_EQ(held(StartFen), "e2e4/65535/0/501 d2d4/0/100/0 ");
}

TEST_F(BookMaking, MostPlayedMovesOfAPositionComeFirst) {
  make("a3 1-0 h3 1-0 h3 1-0 c4 1-0 c4 1-0 c4 0-1");
  EXPECT_EQ(held(StartFen), "c2c4/2/0/1 h2h3/2/0/0 a2a3/1/0/0 ");
}

TEST_F(BookMaking, MovesThatLeadBackEndTheWalkOfTheCheck) {
  make("1. Nf3 Nf6 2. Ng1 Ng8 3. Nf3 1-0\n[FEN \"8/P6k/8/8/8/8/7K/8 w - - 0 1\"]\n\n1. a8=Q 1-0");
  const BookReport report = checkBook(path, stderr);
  EXPECT_EQ(report.positions, 5u);
  EXPECT_EQ(report.reachablePositions, 4u);
}

TEST_F(BookMaking, BrokenGamesCostOneLineEachAndNothingElse) {
  StreamCapture stderrText(stderr);
  make(
      "[Event \"a\"]\n\n1. e4 e5\n2. Ke3 1-0\n\n"
      "[Event \"b\"]\n[FEN \"8/8/8 w - -\"]\n\n1. e4 1-0\n\n"
      "[Event \"c\"]\n[Variant \"Chess960\"]\n\n1. d4 1-0\n"
      "[Event \"d\"]\n\n1. d4 d5 2. Nf3 Nf6 3. Nd2 1-0\n\n"
      "[Event \"e\"]\n\n1. d4 \xC3\xA4?x 1-0\n\n"
      "[Event \"f\"]\n[FEN \"8/4p3/8/3P4/8/8/k7/4K3 b KQ - 0 1\"]\n\n1... e5 2. dxe6 1-0\n"
      "[Event \"g\"]\n\n1. c4 {ok} 1-0\n");
  EXPECT_EQ(stderrText.text(), "");
  EXPECT_THAT(errors,
              testing::ElementsAre("4: not a legal move: Ke3", "6: not a position: 8/8/8 w - -",
                                   "11: another variant of chess: Chess960",
                                   "17: not a legal move: Nd2", "21: not a legal move: ???x"));
  EXPECT_EQ(held(StartFen), "c2c4/1/0/0 ");
  EXPECT_EQ(held("8/8/8/3Pp3/8/8/k7/4K3 w - e6 0 1"), "d5e6/1/0/0 ");
}

TEST_F(BookMaking, OnlyTheFileOfTheBooksNameIsReplaced) {
  const std::string neighbour = folder.write("made.bbk.part", "1. d4 1-0");
  make("1. d4 1-0");
  make("1. e4 1-0");
  EXPECT_EQ(std::filesystem::file_size(neighbour), 9u);
  EXPECT_FALSE(BookBuilder({}).write(folder.file("no/such/folder")));
  std::filesystem::create_directory(folder.file("dir.bbk"));
  EXPECT_FALSE(BookBuilder({}).write(folder.file("dir.bbk")));
  EXPECT_EQ(held(StartFen), "e2e4/1/0/0 ");
  EXPECT_FALSE(std::filesystem::exists(folder.file("dir.bbk.part")));
  EXPECT_FALSE(std::filesystem::exists(folder.file("made.bbk.part1")));
}

// Whatever the bytes, making a book ends, and the book that it makes is sound.
TEST_F(BookMaking, DamagedGamesMakeSoundBooks) {
  const std::string sound =
      "[Event \"x\"]\n[Result \"1-0\"]\n[WhiteElo \"2500\"]\n\n1. e4 {c} e5 (1... c5 $1) 2. Nf3 "
      "Nc6 3. Bb5 a6 4. O-O\nNf6 5. Bxc6 dxc6 6. d4 exd4 7. e5 Nd7 1-0\n\n"
      "[Event \"y\"]\n[FEN \"4k3/P7/8/8/8/8/8/4K3 w - - 0 1\"]\n\n1. a8=Q+ Kd7 ; x\n1/2-1/2\n\n";
  RandomPositions random(20240608);
  for (int round = 0; round < 400 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    std::string pgn = sound + sound + sound;
    damage(pgn, random, 30, "{}()[];%\"\\*$.-=+#\n\r 0123456789abcdefghNBRQKOx");
    pgn.resize(random.below(static_cast<std::uint32_t>(pgn.size() + 1)));
    make(pgn);
  }
}

TEST(BookCheck, FaultsAreNamed) {
  const std::string sorted = recordBytes({{5, "e2e4"}, {6, "e2e4"}, {7, "e2e4"}}, 2);
  const std::string header = headerBytes(2, 16);
  const struct {
    std::string bytes;
    std::string complaint;
  } cases[] = {
      {header + sorted, ""},
      {bookBytes({{5, "e2e4"}, {5, "e2e4"}}, 2), ""},
      {header + sorted.substr(16) + sorted.substr(0, 16), "record 2: not in the order of the keys"},
      {header + sorted + "abc", "3 bytes behind the last record"},
      {header + std::string(32, '\0'), "record 0: the key 0 is no position's"},
      {headerBytes(2, 14) + sorted,
       "not a book: no regular file, or a header that contradicts itself"},
      {bookBytes({{5, "e2e4"}, {5, "d2d4"}, {5, "e2e4", 0, 0, 0, 0, 0x80}}, 2),
       "record 2: a move of its position comes again behind others"},
      {bookBytes({{5, "i2e4"}}, 2), "record 0: not a square of the board"},
      {bookBytes({{lookupKeyOf(StartFen), "e2e4"}, {lookupKeyOf(AfterE4), "e7e4"}}, 2),
       std::string("not a legal move: e7e4 in ") + AfterE4},
  };
  const TestFolder folder;
  for (const auto& c : cases) {
    const std::string path = folder.write("book", c.bytes);
    EXPECT_EQ(complaintsOf(path), c.complaint.empty() ? "" : path + ": " + c.complaint + '\n');
  }
}

}  // namespace
}  // namespace quill::test
