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

TEST(Threat, SpecialCasesOfPawnsAndPins) {
  const struct {
    const char* name;
    const char* fen;
    int value;
  } cases[] = {
      {"a promotion", "7k/8/8/8/8/N7/6p1/K7 w - -", 750},
      {"a promotion, the promoter to move", "7k/8/8/8/8/N7/6p1/K7 b - -", 750},
      {"a promotion against a bare side", "7k/8/8/8/8/P7/6p1/K7 w - -", 0},
      {"a pinned queen", "4r2k/8/8/8/8/4Q3/8/4K3 w - -", 850},
      {"a pinned queen, defended", "4r2k/8/8/8/8/4Q3/3P4/4K3 w - -", 450},
      {"two forked pieces: the lesser is lost", "7k/8/8/8/3p4/2N1R3/8/K7 w - -", 350},
      {"one attacked piece can go", "7k/8/8/8/3p4/4R3/8/K7 w - -", 0},
      {"a pinned pawn forks nothing", "3k4/8/8/8/3p4/2N1R3/8/K2R4 w - -", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(threatValue(boardOf(c.fen), White), c.value) << c.name;
}

}  // namespace
}  // namespace quill
