#include "board/attacks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "support/slow_rules.h"

namespace quill::test {
namespace {

// From one square to another, in files and ranks.
int files(Square a, Square b) { return fileOf(b) - fileOf(a); }
int ranks(Square a, Square b) { return rankOf(b) - rankOf(a); }
int kingSteps(Square a, Square b) { return std::max(std::abs(files(a, b)), std::abs(ranks(a, b))); }

// The squares for which a condition holds.
template <typename Condition>
Bitboard squaresWhere(Condition condition) {
  Bitboard set = 0;
  for (Square square = 0; square < 64; ++square) {
    if (condition(square)) set |= bit(square);
  }
  return set;
}

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

TEST(Attacks, SetsHoldTheSquaresOfTheirDefinition) {
  const struct {
    const char* name;
    Bitboard (*setOf)(Square s);
    bool (*holds)(Square s, Square t);
  } tables[] = {
      {"king", [](Square s) { return kingAttacks[s]; },
       [](Square s, Square t) { return kingSteps(s, t) == 1; }},
      {"knight", [](Square s) { return knightAttacks[s]; },
       [](Square s, Square t) { return std::abs(files(s, t) * ranks(s, t)) == 2; }},
      {"two knight moves", [](Square s) { return twoKnightMoves[s]; },
       [](Square s, Square t) { return (knightAttacks[s] & knightAttacks[t]) != 0; }},
      {"white pawn", [](Square s) { return pawnAttacks[White][s]; },
       [](Square s, Square t) { return std::abs(files(s, t)) == 1 && ranks(s, t) == 1; }},
      {"black pawn", [](Square s) { return pawnAttacks[Black][s]; },
       [](Square s, Square t) { return std::abs(files(s, t)) == 1 && ranks(s, t) == -1; }},
      {"rising diagonal", [](Square s) { return diagonals[s].rising; },
       [](Square s, Square t) { return files(s, t) == ranks(s, t); }},
      {"falling diagonal", [](Square s) { return diagonals[s].falling; },
       [](Square s, Square t) { return files(s, t) == -ranks(s, t); }},
      {"white passed span", [](Square s) { return passedSpan[White][s]; },
       [](Square s, Square t) {
         return std::abs(files(s, t)) < 2 && ranks(s, t) > 0 && rankOf(t) != 7;
       }},
      {"black passed span", [](Square s) { return passedSpan[Black][s]; },
       [](Square s, Square t) {
         return std::abs(files(s, t)) < 2 && ranks(s, t) < 0 && rankOf(t) != 0;
       }},
  };
  for (const auto& table : tables) {
    for (Square s = 0; s < 64; ++s) {
      EXPECT_EQ(table.setOf(s), squaresWhere([&](Square t) { return table.holds(s, t); }))
          << table.name << " of square " << s;
    }
  }
}

TEST(Attacks, BetweenAndLineOfEveryPair) {
  for (Square a = 0; a < 64; ++a) {
    for (Square b = 0; b < 64; ++b) {
      if (a == b) continue;
      const bool isAligned =
          files(a, b) == 0 || ranks(a, b) == 0 || std::abs(files(a, b)) == std::abs(ranks(a, b));
      const Bitboard straight = squaresWhere([=](Square t) {
        return isAligned && files(a, b) * ranks(a, t) == ranks(a, b) * files(a, t);
      });
      EXPECT_EQ(line[a][b], straight) << a << ' ' << b;
      const Bitboard inner = squaresWhere([=](Square t) {
        return t != a && t != b && kingSteps(a, t) + kingSteps(t, b) == kingSteps(a, b);
      });
      EXPECT_EQ(between[a][b], straight & inner) << a << ' ' << b;
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
        const Square path = s + steps * ahead;
        const int time = rank == 1 ? steps - 1 : steps;
        ofKing |= squaresWhere([=](Square king) { return kingSteps(king, path) <= time; });
        Bitboard reach = bit(path);
        for (int jump = 0; jump < time; ++jump) reach |= knightSpread(reach);
        ofKnight |= reach;
      }
      EXPECT_EQ(pawnCone[colour][s], ofKing) << colour << ' ' << s;
      EXPECT_EQ(pawnKnightCone[colour][s], ofKnight) << colour << ' ' << s;
    }
  }
}

}  // namespace
}  // namespace quill::test
