#include "book/book_keys.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace quill {
namespace {

// Another table would make every existing book unreadable: these values never change.
TEST(BookKeys, TableIsTheOneOfTheFileFormat) {
  EXPECT_EQ(BookKeys[0], 0x5719555B81E14BA2u);
  EXPECT_EQ(BookKeys[7], 0xAE1AA273740CCB09u);
  EXPECT_EQ(BookKeys[8], 0xD624CBF347C43773u);
  EXPECT_EQ(BookKeys[15], 0xB7ED4DD974A5B092u);
  EXPECT_EQ(BookKeys[1023], 0x49D577CEF01E65C3u);
  EXPECT_EQ(BookKeys[16], 0xF6420445817157A7u);
  EXPECT_EQ(BookKeys[128], 0x23B1A36D276B54D4u);
  EXPECT_EQ(BookKeys[1022], 0x9FA0B262CBCB6761u);
  std::uint64_t checksum = 0;
  for (const std::uint64_t key : BookKeys) checksum = checksum * 6364136223846793005u + key;
  EXPECT_EQ(checksum, 0x35F7B86B92ABCE1Bu);
}

TEST(BookKeys, AllValuesDiffer) {
  auto sorted = BookKeys;
  std::sort(sorted.begin(), sorted.end());
  EXPECT_EQ(std::adjacent_find(sorted.begin(), sorted.end()), sorted.end());
  EXPECT_NE(sorted.front(), 0u);
}

}  // namespace
}  // namespace quill
