// The book that lies beside the program, made anew from the project's own games.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <set>

#include "board/fen.h"
#include "book/book_selector.h"
#include "quill_book/book_builder.h"
#include "quill_book/book_check.h"
#include "support/book_file.h"
#include "support/play.h"

namespace quill::test {
namespace {

class DefaultBook : public testing::Test {
 protected:
  void SetUp() override {
    std::ifstream file(QUILL_TEST_DATA "/../../data/games.pgn");
    if (!file) GTEST_SKIP() << "there are no games to make it from";
    BookOptions options;
    options.maxPly = 12;
    options.minGames = 2;
    BookBuilder builder(options);
    PgnReader reader(file, options.maxPly);
    for (PgnGame game; reader.next(game);) {
      const auto error = builder.add(game);
      ASSERT_FALSE(error) << "line " << error->line << ": " << error->reason;
    }
    const std::string path = folder_.file("quill.bbk");
    ASSERT_TRUE(builder.write(path));
    ASSERT_TRUE(book_.open(path.c_str()));
    EXPECT_TRUE(checkBook(path, stderr).isSound());
  }

  // The moves that the settings' defaults let the engine play.
  std::set<std::string> playable(const std::string& moves) {
    Board board = boardOf(StartFen);
    playMoves(board, moves);
    std::set<std::string> found;
    const int n = book_.loadCandidates(getFen(board).text());
    if (n == 0) return found;
    const auto rows = selector_.choose(n, board.stm == Black);
    for (int i = 0; i < n; ++i) {
      if (rows[i].pick > 0) found.insert(Book::moveText(book_.candidates()[i]).data());
    }
    return found;
  }

  TestFolder folder_;
  Book book_;
  BookSelector selector_{book_, 1};
};

// One test: making the book takes its time.
TEST_F(DefaultBook, OffersChoiceAtFirstAndHoldsTheUsualLinesTenPliesDeep) {
  EXPECT_GE(playable("").size(), 3u);
  for (const char* first : {"e4", "d4", "c4", "Nf3"}) {
    EXPECT_GE(playable(first).size(), 2u) << "after 1. " << first;
  }
  for (const char* line :
       {"e4 e5 Nf3 Nc6 Bb5 a6 Ba4 Nf6 O-O Be7", "e4 c5 Nf3 d6 d4 cxd4 Nxd4 Nf6 Nc3 a6",
        "e4 e6 d4 d5 Nc3 Bb4 e5 c5 a3 Bxc3+", "e4 c6 d4 d5 Nc3 dxe4 Nxe4 Bf5 Ng3 Bg6",
        "d4 d5 c4 e6 Nc3 Nf6 Bg5 Be7 e3 O-O", "d4 Nf6 c4 g6 Nc3 Bg7 e4 d6 Nf3 O-O",
        "c4 e5 Nc3 Nf6 Nf3 Nc6 g3 d5 cxd5 Nxd5", "Nf3 d5 g3 Nf6 Bg2 e6 O-O Be7 d3 O-O"}) {
    Board board = boardOf(StartFen);
    playMoves(board, line);
    EXPECT_GT(book_.loadCandidates(getFen(board).text()), 0) << line;
  }
}

}  // namespace
}  // namespace quill::test
