#include "board/zobrist.h"

#include <gtest/gtest.h>

#include <set>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/sfmt.h"
#include "support/positions.h"

namespace quill {
namespace {

TEST(Sfmt, GivesThePublishedOutputs) {
  Sfmt generator(1234);
  for (const std::uint32_t expected :
       {3440181298u, 1564997079u, 1510669302u, 2930277156u, 1452439940u, 3796268453u}) {
    EXPECT_EQ(generator.next32(), expected);
  }
}

TEST(Sfmt, A64BitOutputIsTwoWordsTheFirstOneLow) {
  Sfmt words(99);
  Sfmt pairs(99);
  for (int i = 0; i < 2000; ++i) {  // over several regenerations of the state
    const std::uint64_t low = words.next32();
    const std::uint64_t high = words.next32();
    ASSERT_EQ(pairs.next64(), high << 32 | low) << i;
  }
}

TEST(Zobrist, KeysAreTheKnownOnes) {
  EXPECT_EQ(zobrist[0][0], 0xc60eccb61d342149);
  EXPECT_EQ(zobrist[0][1], 0x7cac35b76ce626a3);
  EXPECT_EQ(castleKey[WhiteShort], 0x227819d244254311);
  EXPECT_EQ(castleKey[BlackShort], 0xa3104e308cb0c4db);
  EXPECT_EQ(castleKey[WhiteLong], 0x535334e60b5d7041);
  EXPECT_EQ(castleKey[BlackLong], 0x112c8597fdb68f62);
}

TEST(Zobrist, CastleKeysAreTheSumsOfTheirRights) {
  EXPECT_EQ(castleKey[0], 0u);
  for (unsigned rights = 1; rights < 16; ++rights) {
    const unsigned lowest = rights & (~rights + 1);
    EXPECT_EQ(castleKey[rights], castleKey[lowest] ^ castleKey[rights ^ lowest]) << rights;
  }
}

TEST(Zobrist, NoTwoKeysAreEqual) {
  std::set<std::uint64_t> keys;
  for (const auto& row : zobrist) keys.insert(std::begin(row), std::end(row));
  EXPECT_EQ(keys.size(), 1024u);
}

TEST(Zobrist, OpeningPositionsHaveTheirKnownKeys) {
  Board board;
  ASSERT_TRUE(setFen(board, test::StartFen));
  EXPECT_EQ(board.key, 0xf86e725cd0728910);
  EXPECT_EQ(board.pawnKey, 0x91fc11226777354c);
  makeMove(board, makeQuiet(E2, E4) | DoubleStepFlag);
  EXPECT_EQ(board.key, 0xafd8a53005c86d0d);
  makeMove(board, makeQuiet(G8, F6));
  makeMove(board, makeQuiet(E4, E5));
  makeMove(board, makeQuiet(D7, D5) | DoubleStepFlag);
  EXPECT_EQ(board.key, 0x08fd9a24ca6181da);
}

}  // namespace
}  // namespace quill
