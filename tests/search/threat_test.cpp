#include "search/threat.h"

#include <gtest/gtest.h>

#include "support/play.h"
#include "support/reference.h"

namespace quill {
namespace {

using test::boardOf;

TEST(Threat, ReferencePositionsAgree) {
  for (const auto& position : test::referencePositions()) {
    const Board board = boardOf(position["getFen"]);
    for (const Colour side : {White, Black}) {
      if (position["threat"][side].is_null()) continue;
      EXPECT_EQ(threatValue(board, side), position["threat"][side])
          << position["getFen"] << " " << side;
    }
  }
}

TEST(Threat, APromotionCountsOnlyAgainstASideWithPieces) {
  for (const char* mover : {" w - -", " b - -"}) {
    const std::string withKnight = std::string("7k/8/8/8/8/N7/6p1/K7") + mover;
    const std::string bare = std::string("7k/8/8/8/8/P7/6p1/K7") + mover;
    EXPECT_EQ(threatValue(boardOf(withKnight), White), 100 * 7 - 50 + 100) << withKnight;
    EXPECT_EQ(threatValue(boardOf(bare), White), 0) << bare;
  }
}

TEST(Threat, APinnedQueenCountsWithWhatItsExchangeLoses) {
  EXPECT_EQ(threatValue(boardOf("4r2k/8/8/8/8/4Q3/8/4K3 w - -"), White), 100 * 8 - 50 + 100);
  // Defended, the queen still costs the difference to the rook.
  EXPECT_EQ(threatValue(boardOf("4r2k/8/8/8/8/4Q3/3P4/4K3 w - -"), White), 100 * 4 - 50 + 100);
}

TEST(Threat, OfTwoForkedPiecesTheLesserIsLost) {
  EXPECT_EQ(threatValue(boardOf("7k/8/8/8/3p4/2N1R3/8/K7 w - -"), White), 100 * 3 - 50 + 100);
  EXPECT_EQ(threatValue(boardOf("7k/8/8/8/3p4/4R3/8/K7 w - -"), White), 0);
  // A pinned pawn forks nothing.
  EXPECT_EQ(threatValue(boardOf("3k4/8/8/8/3p4/2N1R3/8/K2R4 w - -"), White), 0);
}

}  // namespace
}  // namespace quill
