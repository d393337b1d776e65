#include "board/attacks.h"

#include <gtest/gtest.h>

#include "support/slow_rules.h"

namespace quill::test {
namespace {

TEST(Attacks, SlidersAreRightForEverySubsetOfTheirLines) {
  for (Square square = 0; square < 64; ++square) {
    for (const int type : {Rook, Bishop}) {
      const Bitboard lines = (type == Rook ? rookLines : bishopLines)[square] & ~bit(square);
      Bitboard subset = 0;
      do {
        const Bitboard attacks =
            type == Rook ? rookAttacks(square, subset) : bishopAttacks(square, subset);
        ASSERT_EQ(attacks, slowSliderAttacks(type, square, subset))
            << "type " << type << " square " << square << " occupancy " << subset;
        subset = (subset - lines) & lines;
      } while (subset != 0);
    }
  }
}

// A king or a knight catches a pawn when it can stand on one of the squares ahead no later than the
// pawn, which has its own double step from the second rank.
TEST(Attacks, ConesHoldTheSquaresWithinReachOfThePawnsPath) {
  for (const Colour colour : {White, Black}) {
    const int ahead = colour == White ? 8 : -8;
    for (Square s = 0; s < 64; ++s) {
      const int rank = relativeRank(colour, s);
      if (rank == 0 || rank == 7) continue;
      Bitboard ofKing = 0;
      Bitboard ofKnight = 0;
      for (int steps = 1; steps <= 7 - rank; ++steps) {
        Bitboard kings = bit(s + steps * ahead);
        Bitboard knights = kings;
        for (int time = rank == 1 ? steps - 1 : steps; time > 0; --time) {
          kings = grow(kings);
          knights |= knightSpread(knights);
        }
        ofKing |= kings;
        ofKnight |= knights;
      }
      EXPECT_EQ(pawnCone[colour][s], ofKing) << colour << ' ' << s;
      EXPECT_EQ(pawnKnightCone[colour][s], ofKnight) << colour << ' ' << s;
    }
  }
}

}  // namespace
}  // namespace quill::test
