#include "search/threat.h"

#include <gtest/gtest.h>

#include "support/play.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::boardOf;

TEST(Threat, ReferencePositionsAgree) {
  test::forEachReference([](Board& board, const auto& reference) {
    for (const Colour side : {White, Black}) {
      if (reference["threat"][side].is_null()) continue;
      EXPECT_EQ(threatValue(board, side), reference["threat"][side]) << side;
    }
  });
}

TEST(Threat, APinnedPawnForksNothing) {
  EXPECT_EQ(threatValue(boardOf("7k/8/8/8/3p4/2N1R3/8/K7 w - -"), White), 350);
  EXPECT_EQ(threatValue(boardOf("3k4/8/8/8/3p4/2N1R3/8/K2R4 w - -"), White), 0);
}

}  // namespace
}  // namespace quill
