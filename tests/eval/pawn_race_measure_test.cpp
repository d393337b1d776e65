#include <gtest/gtest.h>

#include "../../tools/pawn_race_measure.h"

namespace quill::test {
namespace {

TEST(PawnRaceSlow, TellsNearlyAllEndingsOfOnePawnRight) {
  const RaceMeasure measure = measurePawnRace();
  for (const RaceTally& tally : measure.bySideToMove) {
    EXPECT_GT(tally.rightShare(), 0.985);
    // A win that is none costs more than one not seen: the result counts as exact.
    EXPECT_LT(tally.falseWins, 100);
  }
  EXPECT_EQ(measure.bySideToMove[White].positions, 163328);
  EXPECT_EQ(measure.bySideToMove[Black].positions, 168024);
}

}  // namespace
}  // namespace quill::test
