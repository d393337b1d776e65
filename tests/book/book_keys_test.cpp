#include "book/book_keys.h"

#include <gtest/gtest.h>

namespace quill {
namespace {

// Another table would make every existing book unreadable: these values never change.
TEST(BookKeys, TableIsTheOneOfTheFileFormat) {
  EXPECT_EQ(BookKeys[0], 0x5719555B81E14BA2u);
  std::uint64_t checksum = 0;
  for (const std::uint64_t key : BookKeys) checksum = checksum * 6364136223846793005u + key;
  EXPECT_EQ(checksum, 0x35F7B86B92ABCE1Bu);
}

}  // namespace
}  // namespace quill
