#include "book/book.h"

#include <gtest/gtest.h>

#include "board/fen.h"
#include "book/book_keys.h"
#include "support/book_file.h"
#include "support/random_positions.h"
#include "support/reference.h"

namespace quill::test {
namespace {

std::uint64_t keyOf(const std::string& fen) { return Book::bookKey(fen.c_str())->key; }

std::string movesOf(const Book& book) {
  std::string moves;
  for (const BookEntry& entry : book.candidates()) {
    if (!moves.empty()) moves += ' ';
    moves += Book::moveText(entry).data();
  }
  return moves;
}

TEST(BookKey, FormsOfTheSamePositionAgree) {
  EXPECT_EQ(lookupKeyOf(StartFen), 0xAC4862F5BEBA726Eu) << "fixed by the file format";
  EXPECT_EQ(keyOf(StartPosition), keyOf(StartFen));
  EXPECT_EQ(keyOf("  rnbqkbnr/pppppppp/44/1111211/8/53/PPPPPPPP/RNBQKBNR   w  QkKq   -  0  1"),
            keyOf(StartFen));
  EXPECT_EQ(lookupKeyOf("8/8/8/8/8/8/8/8 w - -") ^ lookupKeyOf("8/8/8/8/8/8/8/8 b - -"), 1u);
}

// Another table would make every existing book unreadable: these values never change.
TEST(BookKey, TableIsTheOneOfTheFileFormat) {
  std::uint64_t checksum = 0;
  for (const std::uint64_t key : BookKeys) checksum = checksum * 6364136223846793005u + key;
  EXPECT_EQ(checksum, 0x35F7B86B92ABCE1Bu);
}

TEST(BookKey, EachRightAndFileAddsItsTerm) {
  const struct {
    const char* fields;
    std::uint64_t key;
  } cases[] = {
      {"K -", BookKeys[8]},  {"k -", BookKeys[9]},  {"Q -", BookKeys[10]}, {"q -", BookKeys[11]},
      {"- g3", BookKeys[6]}, {"- g4", BookKeys[6]}, {"- g9", 0},           {"- i4", 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(keyOf(std::string("8/8/8/8/8/8/8/8 w ") + c.fields), c.key) << c.fields;
  }
}

TEST(BookKey, PlyComesFromTheMoveNumber) {
  const struct {
    const char* fields;
    int ply;
  } cases[] = {
      {"w - - 0 1", 0}, {"w - - 0 10", 18}, {"b - - 0 10", 19}, {"w - - 99 12x", 22},
      {"w - - 0", -2},  {"w", -2},          {"w - - 0 0", -2},  {"w - - 0 -3", -2},
      {"b - -", -1},    {"w - - 0 x", -2},
  };
  const auto ply = [](const std::string& fields) {
    return Book::bookKey(("4k3/8/8/8/8/8/8/4K3 " + fields).c_str())->ply;
  };
  for (const auto& c : cases) EXPECT_EQ(ply(c.fields), c.ply) << c.fields;
  EXPECT_GT(ply("b - - 0 99999999999999999999999"), 1000000);
}

TEST(BookKey, PlacementThatRunsOffTheBoardIsRefusedWithOneLine) {
  StreamCapture errors(stderr);
  EXPECT_FALSE(Book::bookKey("ppppppppp/8 w"));
  EXPECT_EQ(errors.take(), "illegal fen, x=9>8: /8 w\n");
  EXPECT_FALSE(Book::bookKey("8/8/8/8/8/8/8/8/8 w - -"));
  EXPECT_EQ(errors.take(), "illegal fen, y=-1<0: 8 w - -\n");
  // The last character of the placement is not looked at any more.
  EXPECT_TRUE(Book::bookKey("8/8/8/8/8/8/8/88 w - -"));
  EXPECT_TRUE(Book::bookKey("8/8/8/8/8/8/8/8/ w - -"));
  EXPECT_FALSE(Book::bookKey(nullptr));
  EXPECT_TRUE(Book::bookKey(""));
}

// The en-passant field names the pawn's own square here, the square behind it in other programs.
TEST(BookKey, EngineFenAndForeignFenOfReferencePositionsAgree) {
  forEachReference([](const Board& board, const auto& reference) {
    EXPECT_EQ(keyOf(getFen(board).text()), keyOf(reference["fen"]));
  });
}

class BookFile : public testing::Test {
 protected:
  bool open(const std::string& bytes) { return book.open(folder.write("book", bytes).c_str()); }

  const std::uint64_t startKey = lookupKeyOf(StartFen);
  TestFolder folder;
  Book book;
};

TEST_F(BookFile, AllFourRecordLayoutsAreRead) {
  for (const unsigned flags : {0u, 2u, 4u, 6u}) {
    SCOPED_TRACE(flags);
    ASSERT_TRUE(open(bookBytes(
        {{startKey, "e2e4", 300, 20, 1, 2470}, {startKey, "g1f3", 1, 2, 3, 2400}}, flags)));
    ASSERT_EQ(book.loadCandidates(StartFen), 2);
    EXPECT_EQ(movesOf(book), "e2e4 g1f3");
    const BookEntry& entry = book.candidates()[0];
    EXPECT_EQ(entry.wins, flags & 2 ? 300u : 0u);
    EXPECT_EQ(entry.draws, flags & 2 ? 20u : 0u);
    EXPECT_EQ(entry.losses, flags & 2 ? 1u : 0u);
    EXPECT_FLOAT_EQ(entry.strength, flags & 4 ? 2.0f : 0.0f);
    EXPECT_FLOAT_EQ(book.candidates()[1].strength, flags & 4 ? 1.0f : 0.0f);
    EXPECT_EQ(book.hasElo(), (flags & 4) != 0);
  }
}

TEST_F(BookFile, HeaderBytesCountAsSlots) {
  const std::vector<TestRecord> records = {{5}, {6}, {7}};
  ASSERT_TRUE(open(bookBytes(records, 2)));
  EXPECT_EQ(book.recordCount(), 4u);
  ASSERT_TRUE(open(bookBytes(records, 6)));
  EXPECT_EQ(book.recordCount(), 3u);
  ASSERT_TRUE(open(""));
  EXPECT_EQ(book.recordCount(), 0u);
  EXPECT_FALSE(book.find(5));
}

TEST_F(BookFile, HeaderMayBeMissingOrOfAnotherSize) {
  ASSERT_TRUE(open(recordBytes({{startKey, "d2d4", 7, 8, 9}}, 2)));
  EXPECT_EQ(book.recordCount(), 1u);
  ASSERT_EQ(book.loadCandidates(StartFen), 1);
  EXPECT_EQ(book.candidates()[0].losses, 9u);
  const std::string records = recordBytes({{startKey, "d2d4"}}, 0);
  ASSERT_TRUE(open(headerBytes(0, 10, 200) + std::string(184, '\x7F') + records));
  EXPECT_EQ(book.loadCandidates(StartFen), 1);
  ASSERT_TRUE(open(headerBytes(0, 10, 3) + records)) << "a size below 16 is read as 16";
  EXPECT_EQ(book.loadCandidates(StartFen), 1);
}

TEST_F(BookFile, WhatIsNoBookIsNotOpened) {
  std::vector<std::string> paths = {folder.file("missing"), folder.file(""), "/dev/zero"};
#ifndef _WIN32
  paths.push_back(folder.file("pipe"));  // does not wait for a writer
  ASSERT_EQ(std::system(("mkfifo " + paths.back()).c_str()), 0);
#endif
  for (const auto& [flags, size] :
       {std::pair{2u, 0u}, {2u, 10u}, {0u, 16u}, {6u, 16u}, {3u, 16u}, {1u, 10u}}) {
    const std::string bytes = headerBytes(flags, size) + std::string(160, '\1');
    paths.push_back(folder.write("bad" + std::to_string(paths.size()), bytes));
  }
  for (const std::string& path : paths) {
    // The book that was open before is open no more.
    ASSERT_TRUE(open(bookBytes({{lookupKeyOf(StartFen), "e2e4"}}, 4)));
    EXPECT_FALSE(book.open(path.c_str())) << path;
    EXPECT_EQ(book.recordCount(), 0u);
    EXPECT_EQ(book.loadCandidates(StartFen), 0);
    EXPECT_FALSE(book.hasElo());
  }
  EXPECT_FALSE(book.open(nullptr));
}

TEST_F(BookFile, EachKeyOfASmallBookIsFoundAndNoOther) {
  for (int n = 1; n <= 40; ++n) {
    std::vector<TestRecord> records;
    for (int i = 0; i < n; ++i) records.push_back({10u * (i + 1)});
    for (const unsigned flags : {0u, 2u, 4u, 6u}) {
      ASSERT_TRUE(open(bookBytes(records, flags)));
      for (std::uint64_t key = 0; key <= 10u * n + 10; ++key) {
        ASSERT_EQ(book.find(key), key >= 10 && key <= 10u * n && key % 10 == 0)
            << n << " records, flags " << flags << ", key " << key;
      }
    }
  }
}

TEST_F(BookFile, RepeatedMoveIsMergedWithItsPredecessorOnly) {
  ASSERT_TRUE(open(bookBytes({{startKey, "e2e4", 1, 2, 3, 2400},
                              {startKey, "e2e4", 10, 20, 30, 2400, 0x80},
                              {startKey, "d2d4", 5, 5, 5, 2400},
                              {startKey, "e2e4", 7, 7, 7, 2400, 0x80}},
                             6)));
  ASSERT_EQ(book.loadCandidates(StartFen), 3);
  EXPECT_EQ(movesOf(book), "e2e4 d2d4 e2e4") << "bit 7 of the origin is no part of the square";
  EXPECT_EQ(book.candidates()[0].wins, 11u);
  EXPECT_EQ(book.candidates()[0].losses, 33u);
  EXPECT_FLOAT_EQ(book.candidates()[0].strength, 2.0f);
}

TEST_F(BookFile, CandidatesEndAtThirtyTwoMoves) {
  std::vector<TestRecord> records = {{startKey - 1, "h7h8"}, {startKey + 1, "h7h8"}};
  for (int i = 0; i < 40; ++i) {
    const std::string move{'a', '1', static_cast<char>('a' + i % 8),
                           static_cast<char>('1' + i / 8)};
    records.push_back({startKey, move, 1});
    records.push_back({startKey, move, 1});
  }
  ASSERT_TRUE(open(bookBytes(records, 2)));
  ASSERT_EQ(book.loadCandidates(StartFen), 32);
  EXPECT_EQ(std::string(Book::moveText(book.candidates()[31]).data()), "a1h4");
  EXPECT_EQ(book.candidates()[0].wins, 2u);
}

TEST_F(BookFile, KeysCompareAsUnsignedNumbers) {
  ASSERT_TRUE(open(bookBytes({{1}, {0x7FFFFFFFFFFFFFFF}, {0x8000000000000000}, {~0ull - 1}}, 0)));
  for (const std::uint64_t key : {1ull, 0x7FFFFFFFFFFFFFFFull, 0x8000000000000000ull, ~0ull - 1}) {
    EXPECT_TRUE(book.find(key)) << std::hex << key;
  }
}

TEST_F(BookFile, RecordCutOffByTheEndOfTheFileIsNone) {
  const std::string whole =
      bookBytes({{1, "a2a3"}, {startKey, "e2e4", 1, 2, 3}, {startKey, "d2d4", 1, 2, 3}}, 2);
  for (std::size_t cut = 0; cut <= 48; ++cut) {
    ASSERT_TRUE(open(whole.substr(0, whole.size() - cut)));
    EXPECT_EQ(book.loadCandidates(StartFen), cut == 0 ? 2 : cut <= 16 ? 1 : 0) << cut;
  }
}

// A terabyte of nothing: offsets beyond 32 bits, and a position whose key is that of empty space.
TEST_F(BookFile, HugeFileWithHolesIsSearchedAtOnce) {
  const std::uint64_t size = std::uint64_t{1} << 40;
  const std::string path = folder.write("sparse", headerBytes(2, 16));
  const std::string tail = recordBytes({{lookupKeyOf(StartFen), "e2e4", 1, 2, 3}}, 2);
  std::error_code error;
  std::filesystem::resize_file(path, size - 16, error);
  if (error) GTEST_SKIP() << "the file system holds no such file: " << error.message();
  std::ofstream(path, std::ios::binary | std::ios::app) << tail;
  ASSERT_TRUE(book.open(path.c_str()));
  EXPECT_EQ(book.recordCount(), size / 16);
  EXPECT_EQ(book.loadCandidates(StartFen), 1);
  EXPECT_EQ(movesOf(book), "e2e4");
  EXPECT_EQ(book.loadCandidates("8/8/8/8/8/8/8/8 w - -"), 0) << "no position has the key 0";
  EXPECT_LT(book.readCount(), 60u);
}

// Damage may hide moves or bring foreign ones; it must not hang, crash or read out of bounds.
TEST_F(BookFile, DamagedBooksAreReadWithoutHarm) {
  RandomPositions random(20240607);
  for (int round = 0; round < 1000; ++round) {
    SCOPED_TRACE(round);
    std::vector<TestRecord> records;
    for (std::uint32_t i = random.below(60); i > 0; --i) {
      records.push_back({startKey + random.below(3) - 1, "e2e4", 65535, 65535, 65535, 65535});
    }
    std::string bytes = bookBytes(records, 2 * random.below(4));
    damage(bytes, random, 20, bookBytes({{startKey, "e2e4"}}, 6));
    bytes.resize(random.below(static_cast<std::uint32_t>(bytes.size() + 1)));
    if (!open(bytes)) continue;
    ASSERT_LE(book.loadCandidates(StartFen), MaxBookCandidates);
    for (const BookEntry& entry : book.candidates()) {
      ASSERT_EQ(entry.key, startKey);
      ASSERT_EQ(std::string(Book::moveText(entry).data()).size(), 4u);
    }
  }
}

}  // namespace
}  // namespace quill::test
