#include "book/book.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "board/board.h"
#include "board/fen.h"
#include "book/book_keys.h"
#include "book_file.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::bookBytes;
using test::headerBytes;
using test::lookupKeyOf;
using test::recordBytes;
using test::StartFen;
using test::TestFolder;
using test::TestRecord;

std::uint64_t keyOf(const char* fen) { return Book::bookKey(fen)->key; }

std::string movesOf(const Book& book) {
  std::string moves;
  for (const BookEntry& entry : book.candidates()) {
    if (!moves.empty()) moves += ' ';
    moves += Book::moveText(entry).data();
  }
  return moves;
}

TEST(BookKey, PiecesRightsAndFilesAddTheirOwnTerms) {
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w - - 0 1"), 0u);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/P7 w - -"), BookKeys[1 << 7]);
  EXPECT_EQ(keyOf("q7/8/8/8/8/8/8/8 w - -"), BookKeys[(7 << 7) | (7 << 4) | 8]);
  EXPECT_EQ(keyOf("8/8/8/5k2/8/8/8/8 w - -"), BookKeys[(3 << 7) | (4 << 4) | 8 | 5]);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/7R w KQkq -"),
            BookKeys[(6 << 7) | 7] ^ BookKeys[8] ^ BookKeys[9] ^ BookKeys[10] ^ BookKeys[11]);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w k -"), BookKeys[9]);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w Q -"), BookKeys[10]);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w - g3"), BookKeys[6]);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w - g4"), BookKeys[6]) << "only the file counts";
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w - g9"), 0u);
  EXPECT_EQ(keyOf("8/8/8/8/8/8/8/8 w - i4"), 0u);
}

TEST(BookKey, SideToMoveFlipsTheLowestBitOfTheLookupKey) {
  const auto white = Book::bookKey("4k3/8/8/8/8/8/8/4K3 w - - 0 1");
  const auto black = Book::bookKey("4k3/8/8/8/8/8/8/4K3 b - - 0 1");
  EXPECT_FALSE(white->black);
  EXPECT_TRUE(black->black);
  EXPECT_EQ(white->key, black->key);
  EXPECT_EQ(white->lookupKey() ^ black->lookupKey(), 1u);
}

TEST(BookKey, FormsOfTheSamePositionAgree) {
  EXPECT_EQ(lookupKeyOf(StartFen), 0xAC4862F5BEBA726Eu) << "fixed by the file format";
  EXPECT_EQ(keyOf(StartPosition), keyOf(StartFen));
  EXPECT_EQ(keyOf("  rnbqkbnr/pppppppp/44/1111211/8/53/PPPPPPPP/RNBQKBNR   w  QkKq   -  0  1"),
            keyOf(StartFen));
}

TEST(BookKey, PlyComesFromTheMoveNumber) {
  const auto ply = [](const std::string& rest) {
    return Book::bookKey(("4k3/8/8/8/8/8/8/4K3 " + rest).c_str())->ply;
  };
  EXPECT_EQ(ply("w - - 0 1"), 0);
  EXPECT_EQ(ply("w - - 0 10"), 18);
  EXPECT_EQ(ply("b - - 0 10"), 19);
  EXPECT_EQ(ply("w - - 99 12x"), 22);
  for (const char* missing : {"w - - 0", "w", "w - - 0 0", "w - - 0 -3", "w - - 0 x"}) {
    EXPECT_EQ(ply(missing), -2) << missing;
  }
  EXPECT_EQ(ply("b - -"), -1);
  EXPECT_GT(ply("b - - 0 99999999999999999999999"), 1000000);
}

TEST(BookKey, PlacementThatRunsOffTheBoardIsRefusedWithOneLine) {
  const auto complaint = [](const char* fen) {
    testing::internal::CaptureStderr();
    EXPECT_FALSE(Book::bookKey(fen)) << fen;
    return testing::internal::GetCapturedStderr();
  };
  EXPECT_EQ(complaint("ppppppppp/8 w"), "illegal fen, x=9>8: /8 w\n");
  EXPECT_EQ(complaint("8/8/8/8/8/8/8/8/8 w - -"), "illegal fen, y=-1<0: 8 w - -\n");
  // The last character of the placement is not looked at any more.
  EXPECT_TRUE(Book::bookKey("8/8/8/8/8/8/8/88 w - -"));
  EXPECT_TRUE(Book::bookKey("8/8/8/8/8/8/8/8/ w - -"));
  EXPECT_FALSE(Book::bookKey(nullptr));
  EXPECT_TRUE(Book::bookKey(""));
}

// The en-passant field names the pawn's own square here, the square behind it in other programs.
TEST(BookKey, EngineFenAndForeignFenOfReferencePositionsAgree) {
  for (const auto& position : test::referencePositions()) {
    const std::string fen = position.at("fen");
    Board board;
    ASSERT_TRUE(setFen(board, fen.c_str())) << fen;
    const EngineString own = getFen(board);
    EXPECT_EQ(lookupKeyOf(own.text()), lookupKeyOf(fen.c_str())) << fen;
  }
}

class BookFile : public testing::Test {
 protected:
  bool open(const std::string& bytes) { return book.open(folder.write("book", bytes).c_str()); }

  TestFolder folder;
  Book book;
};

TEST_F(BookFile, AllFourRecordLayoutsAreRead) {
  const std::uint64_t key = lookupKeyOf(StartFen);
  for (const unsigned flags : {0u, 2u, 4u, 6u}) {
    SCOPED_TRACE(flags);
    ASSERT_TRUE(
        open(bookBytes({{key, "e2e4", 300, 20, 1, 2470}, {key, "g1f3", 1, 2, 3, 2400}}, flags)));
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

TEST_F(BookFile, FileWithoutAHeaderHoldsBareRecordsWithCounts) {
  const std::uint64_t key = lookupKeyOf(StartFen);
  ASSERT_TRUE(open(recordBytes({{key, "d2d4", 7, 8, 9}}, 2)));
  EXPECT_EQ(book.recordCount(), 1u);
  ASSERT_EQ(book.loadCandidates(StartFen), 1);
  EXPECT_EQ(book.candidates()[0].losses, 9u);
}

TEST_F(BookFile, HeaderSizeMovesTheFirstRecord) {
  const std::uint64_t key = lookupKeyOf(StartFen);
  const std::string records = recordBytes({{key, "d2d4"}}, 0);
  ASSERT_TRUE(open(headerBytes(0, 10, 200) + std::string(184, '\x7F') + records));
  EXPECT_EQ(book.loadCandidates(StartFen), 1);
  ASSERT_TRUE(open(headerBytes(0, 10, 3) + records)) << "a size below 16 is read as 16";
  EXPECT_EQ(book.loadCandidates(StartFen), 1);
}

TEST_F(BookFile, WhatIsNoBookIsNotOpened) {
  ASSERT_TRUE(open(bookBytes({{lookupKeyOf(StartFen), "e2e4"}}, 4)));
  EXPECT_FALSE(book.open(folder.file("missing").c_str()));
  EXPECT_EQ(book.loadCandidates(StartFen), 0);
  EXPECT_FALSE(book.open(folder.file("").c_str())) << "a folder";
  EXPECT_FALSE(book.open(nullptr));
  EXPECT_FALSE(book.open("/dev/zero"));
  ASSERT_EQ(std::system(("mkfifo " + folder.file("pipe")).c_str()), 0);
  EXPECT_FALSE(book.open(folder.file("pipe").c_str())) << "and does not wait for a writer";
  for (const auto& [flags, size] : {std::pair{2u, 0u},
                                    {2u, 10u},
                                    {0u, 16u},
                                    {6u, 16u},
                                    {4u, 18u},
                                    {3u, 16u},
                                    {1u, 10u},
                                    {2u, 255u}}) {
    // The book that was open before is open no more.
    ASSERT_TRUE(open(bookBytes({{lookupKeyOf(StartFen), "e2e4"}}, 4)));
    EXPECT_FALSE(open(headerBytes(flags, size) + std::string(160, '\1'))) << flags << " " << size;
    EXPECT_EQ(book.recordCount(), 0u);
    EXPECT_EQ(book.loadCandidates(StartFen), 0);
    EXPECT_FALSE(book.hasElo());
  }
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
  const std::uint64_t key = lookupKeyOf(StartFen);
  ASSERT_TRUE(open(bookBytes({{key, "e2e4", 1, 2, 3, 2400},
                              {key, "e2e4", 10, 20, 30, 2400, 0x80},
                              {key, "d2d4", 5, 5, 5, 2400},
                              {key, "e2e4", 7, 7, 7, 2400, 0x80}},
                             6)));
  ASSERT_EQ(book.loadCandidates(StartFen), 3);
  EXPECT_EQ(movesOf(book), "e2e4 d2d4 e2e4") << "bit 7 of the origin is no part of the square";
  EXPECT_EQ(book.candidates()[0].wins, 11u);
  EXPECT_EQ(book.candidates()[0].losses, 33u);
  EXPECT_FLOAT_EQ(book.candidates()[0].strength, 2.0f);
}

TEST_F(BookFile, CandidatesEndAtThirtyTwoMoves) {
  const std::uint64_t key = lookupKeyOf(StartFen);
  std::vector<TestRecord> records = {{key - 1, "h7h8"}, {key + 1, "h7h8"}};
  for (int i = 0; i < 40; ++i) {
    const std::string move{'a', '1', static_cast<char>('a' + i % 8),
                           static_cast<char>('1' + i / 8)};
    records.push_back({key, move, 1});
    records.push_back({key, move, 1});
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
  const std::uint64_t key = lookupKeyOf(StartFen);
  const std::string whole =
      bookBytes({{1, "a2a3"}, {key, "e2e4", 1, 2, 3}, {key, "d2d4", 1, 2, 3}}, 2);
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
  constexpr unsigned Seed = 20240607;
  RecordProperty("seed", static_cast<int>(Seed));
  std::mt19937 engine(Seed);
  const auto below = [&engine](std::size_t n) { return static_cast<unsigned>(engine() % n); };
  const std::uint64_t key = lookupKeyOf(StartFen);
  for (int round = 0; round < 1000; ++round) {
    const unsigned flags = 2 * below(4);
    std::vector<TestRecord> records;
    for (unsigned i = below(60); i > 0; --i) {
      records.push_back({key + below(3) - 1, "e2e4", 65535, 65535, 65535, 65535});
    }
    std::string bytes = bookBytes(records, flags);
    for (unsigned i = below(20); i > 0; --i)
      bytes[below(bytes.size())] = static_cast<char>(below(256));
    bytes.resize(below(bytes.size() + 1));
    SCOPED_TRACE("seed " + std::to_string(Seed) + ", round " + std::to_string(round));
    if (!open(bytes)) continue;
    const int n = book.loadCandidates(StartFen);
    ASSERT_LE(n, MaxBookCandidates);
    for (int i = 0; i < n; ++i) {
      ASSERT_EQ(book.candidates()[i].key, key);
      ASSERT_EQ(std::string(Book::moveText(book.candidates()[i]).data()).size(), 4u);
    }
  }
}

TEST(BookMoveText, OriginIsMaskedAndDestinationIsNot) {
  BookEntry entry{};
  entry.from = 0x86;  // g1 with the unused bit set
  entry.to = 0x25;
  EXPECT_STREQ(Book::moveText(entry).data(), "g1f3");
  entry.to = 0xA5;
  EXPECT_STREQ(Book::moveText(entry).data(), "g1f;");
}

}  // namespace
}  // namespace quill
