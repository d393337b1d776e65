#include "board/sfmt.h"

#include <gtest/gtest.h>

namespace quill::test {
namespace {

TEST(Sfmt, GivesThePublishedOutputs) {
  Sfmt generator(1234);
  for (const std::uint32_t expected :
       {3440181298u, 1564997079u, 1510669302u, 2930277156u, 1452439940u, 3796268453u}) {
    EXPECT_EQ(generator.next32(), expected);
  }
}

}  // namespace
}  // namespace quill::test
