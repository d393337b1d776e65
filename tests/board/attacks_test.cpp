#include "board/attacks.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "support/slow_rules.h"

namespace quill {
namespace {

// Squares at a distance, in files and ranks.
int fileDistance(Square a, Square b) { return std::abs(fileOf(a) - fileOf(b)); }
int rankDistance(Square a, Square b) { return std::abs(rankOf(a) - rankOf(b)); }
bool isDiagonal(Square a, Square b) { return fileDistance(a, b) == rankDistance(a, b); }
bool isAligned(Square a, Square b) {
  return fileDistance(a, b) == 0 || rankDistance(a, b) == 0 || isDiagonal(a, b);
}

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
        ASSERT_EQ(attacks, test::slowSliderAttacks(type, square, subset))
            << "type " << type << " square " << square << " occupancy " << subset;
        subset = (subset - lines) & lines;
      } while (subset != 0);
    }
  }
}

TEST(Attacks, SlidersIgnoreWhatStandsOffTheirLines) {
  for (Square square = 0; square < 64; ++square) {
    const Bitboard elsewhere = ~queenLines[square];
    EXPECT_EQ(queenAttacks(square, elsewhere), queenLines[square] & ~bit(square));
    EXPECT_EQ(queenAttacks(square, ~Bitboard{0}), kingAttacks[square]);
  }
}

TEST(Attacks, StepsAreDefinedByDistances) {
  for (Square s = 0; s < 64; ++s) {
    EXPECT_EQ(kingAttacks[s], squaresWhere([s](Square t) {
                return s != t && fileDistance(s, t) < 2 && rankDistance(s, t) < 2;
              }));
    EXPECT_EQ(knightAttacks[s],
              squaresWhere([s](Square t) { return fileDistance(s, t) * rankDistance(s, t) == 2; }));
    EXPECT_EQ(twoKnightMoves[s],
              squaresWhere([s](Square t) { return (knightAttacks[s] & knightAttacks[t]) != 0; }));
    EXPECT_EQ(pawnAttacks[White][s], squaresWhere([s](Square t) {
                return fileDistance(s, t) == 1 && rankOf(t) == rankOf(s) + 1;
              }));
    EXPECT_EQ(pawnAttacks[Black][s], squaresWhere([s](Square t) {
                return fileDistance(s, t) == 1 && rankOf(t) == rankOf(s) - 1;
              }));
    EXPECT_EQ(grow(bit(s)), kingAttacks[s] | bit(s));
    EXPECT_EQ(knightSpread(bit(s) | bit(A1)), knightAttacks[s] | knightAttacks[A1]);
  }
}

TEST(Attacks, LinesContainTheirSquare) {
  for (Square s = 0; s < 64; ++s) {
    EXPECT_EQ(fileRank[s].file, squaresWhere([s](Square t) { return fileDistance(s, t) == 0; }));
    EXPECT_EQ(fileRank[s].rank, squaresWhere([s](Square t) { return rankDistance(s, t) == 0; }));
    EXPECT_EQ(diagonals[s].rising, squaresWhere([s](Square t) {
                return fileOf(t) - fileOf(s) == rankOf(t) - rankOf(s);
              }));
    EXPECT_EQ(diagonals[s].falling, squaresWhere([s](Square t) {
                return fileOf(t) - fileOf(s) == rankOf(s) - rankOf(t);
              }));
    EXPECT_EQ(rookLines[s], fileRank[s].file | fileRank[s].rank);
    EXPECT_EQ(bishopLines[s], diagonals[s].rising | diagonals[s].falling);
    EXPECT_EQ(queenLines[s], rookLines[s] | bishopLines[s]);
    EXPECT_EQ(adjacentFiles[s], squaresWhere([s](Square t) { return fileDistance(s, t) == 1; }));
  }
}

TEST(Attacks, BetweenAndLineOfEveryPair) {
  for (Square a = 0; a < 64; ++a) {
    EXPECT_EQ(between[a][a], 0u);
    EXPECT_EQ(line[a][a], fileRank[a].file);
    for (Square b = 0; b < 64; ++b) {
      if (a == b) continue;
      if (!isAligned(a, b)) {
        EXPECT_EQ(between[a][b] | line[a][b], 0u) << a << ' ' << b;
        continue;
      }
      // What a queen on either square sees towards the other.
      const Bitboard both = bit(a) | bit(b);
      const Bitboard common = isDiagonal(a, b) ? bishopAttacks(a, both) & bishopAttacks(b, both)
                                               : rookAttacks(a, both) & rookAttacks(b, both);
      const Bitboard box = squaresWhere([a, b](Square t) {
        return fileDistance(a, t) + fileDistance(t, b) == fileDistance(a, b) &&
               rankDistance(a, t) + rankDistance(t, b) == rankDistance(a, b);
      });
      EXPECT_EQ(between[a][b], common & box & ~both) << a << ' ' << b;
      EXPECT_EQ(line[a][b], squaresWhere([a, b](Square t) {
                  const int turn = (fileOf(b) - fileOf(a)) * (rankOf(t) - rankOf(a)) -
                                   (rankOf(b) - rankOf(a)) * (fileOf(t) - fileOf(a));
                  return turn == 0;  // the three squares lie on one straight line
                }))
          << a << ' ' << b;
    }
  }
}

TEST(Attacks, FrontSpanReachesTheLastRankAndPassedSpanDoesNot) {
  for (const Colour colour : {White, Black}) {
    for (Square s = 0; s < 64; ++s) {
      const int rank = relativeRank(colour, s);
      const auto isAhead = [=](Square t) { return relativeRank(colour, t) > rank; };
      const Bitboard front =
          squaresWhere([=](Square t) { return isAhead(t) && fileDistance(s, t) == 0; });
      EXPECT_EQ(frontSpan[colour][s], rank == 7 ? bit(s) : front);
      EXPECT_EQ(passedSpan[colour][s], squaresWhere([=](Square t) {
                  return isAhead(t) && fileDistance(s, t) < 2 && relativeRank(colour, t) != 7;
                }));
    }
  }
}

// A king needs max(file distance, rank distance) steps. It catches a pawn when it can stand on one
// of the squares ahead no later than the pawn, which has its own double step from the second rank.
TEST(Attacks, KingConeHoldsTheSquaresWithinReachOfThePawnsPath) {
  for (const Colour colour : {White, Black}) {
    const int ahead = colour == White ? 8 : -8;
    for (Square s = 0; s < 64; ++s) {
      const int rank = relativeRank(colour, s);
      if (rank == 0 || rank == 7) {
        EXPECT_EQ(pawnCone[colour][s] | pawnKnightCone[colour][s], 0u) << s;
        continue;
      }
      EXPECT_EQ(pawnCone[colour][s], squaresWhere([=](Square king) {
                  for (int steps = 1; steps <= 7 - rank; ++steps) {
                    const Square path = s + steps * ahead;
                    const int time = rank == 1 ? steps - 1 : steps;
                    const int distance =
                        std::max(fileDistance(king, path), rankDistance(king, path));
                    if (distance <= time) return true;
                  }
                  return false;
                }))
          << colour << ' ' << s;
    }
  }
}

TEST(Attacks, KnightConeHoldsTheSquaresWithinJumpsOfThePawnsPath) {
  for (const Colour colour : {White, Black}) {
    const int ahead = colour == White ? 8 : -8;
    for (Square s = 0; s < 64; ++s) {
      const int rank = relativeRank(colour, s);
      if (rank == 0 || rank == 7) continue;
      Bitboard expected = 0;
      for (int steps = 1; steps <= 7 - rank; ++steps) {
        Bitboard reach = bit(s + steps * ahead);
        for (int jump = 0; jump < (rank == 1 ? steps - 1 : steps); ++jump) {
          reach |= knightSpread(reach);
        }
        expected |= reach;
      }
      EXPECT_EQ(pawnKnightCone[colour][s], expected) << colour << ' ' << s;
    }
  }
}

}  // namespace
}  // namespace quill
