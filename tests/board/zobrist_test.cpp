#include "board/zobrist.h"

#include <gtest/gtest.h>

#include <set>

#include "board/sfmt.h"

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

TEST(Zobrist, NoTwoKeysAreEqual) {
  std::set<std::uint64_t> keys;
  for (const auto& row : zobrist) keys.insert(std::begin(row), std::end(row));
  EXPECT_EQ(keys.size(), 1024u);
}

}  // namespace
}  // namespace quill
