#include "board/attacks.h"

#include <array>
#include <cassert>
#include <span>

#include "board/magics.h"

namespace quill {

namespace detail {

AttackTables attackStore;

}  // namespace detail

namespace {

using detail::attackStore;

struct Step {
  int file;
  int rank;
};

constexpr Step RookSteps[] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
constexpr Step BishopSteps[] = {{1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
constexpr Step AllSteps[] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}, {1, 1}, {-1, 1}, {1, -1}, {-1, -1}};
constexpr Step KnightSteps[] = {{-1, 2}, {1, 2},   {2, 1},   {2, -1},
                                {1, -2}, {-1, -2}, {-2, -1}, {-2, 1}};

std::array<Bitboard, RookTableSize> rookStore;
std::array<Bitboard, BishopTableSize> bishopStore;

constexpr bool isOnBoard(int file, int rank) {
  return file >= 0 && file < 8 && rank >= 0 && rank < 8;
}

// Walks each direction square by square up to the first occupied one.
Bitboard slowAttacks(Square square, Bitboard occupancy, std::span<const Step> steps) {
  Bitboard attacks = 0;
  for (const Step step : steps) {
    int file = fileOf(square) + step.file;
    int rank = rankOf(square) + step.rank;
    for (; isOnBoard(file, rank); file += step.file, rank += step.rank) {
      attacks |= bit(makeSquare(file, rank));
      if (contains(occupancy, makeSquare(file, rank))) break;
    }
  }
  return attacks;
}

// The squares whose occupancy matters. The last square of a line does not: there is nothing behind
// it to be blocked.
Bitboard relevantOccupancy(Square square, std::span<const Step> steps) {
  Bitboard mask = 0;
  for (const Step step : steps) {
    int file = fileOf(square) + step.file;
    int rank = rankOf(square) + step.rank;
    for (; isOnBoard(file + step.file, rank + step.rank); file += step.file, rank += step.rank) {
      mask |= bit(makeSquare(file, rank));
    }
  }
  return mask;
}

void initMagics(Magic (&magics)[64], std::span<Bitboard> store, std::span<const Step> steps,
                const std::uint64_t (&factors)[64], const std::uint8_t (&indexBits)[64]) {
  Bitboard* block = store.data();
  for (Square square = 0; square < 64; ++square) {
    const Bitboard mask = relevantOccupancy(square, steps);
    magics[square] = {mask, factors[square], block, 64u - indexBits[square]};
    // All subsets of the mask, the empty one first.
    Bitboard subset = 0;
    do {
      block[(subset * factors[square]) >> magics[square].shift] =
          slowAttacks(square, subset, steps);
      subset = (subset - mask) & mask;
    } while (subset != 0);
    block += std::size_t{1} << indexBits[square];
  }
  assert(block == store.data() + store.size());
}

Bitboard stepSet(Square square, std::span<const Step> steps) {
  Bitboard set = 0;
  for (const Step step : steps) {
    const int file = fileOf(square) + step.file;
    const int rank = rankOf(square) + step.rank;
    if (isOnBoard(file, rank)) set |= bit(makeSquare(file, rank));
  }
  return set;
}

void initLines() {
  for (Square square = 0; square < 64; ++square) {
    const Bitboard self = bit(square);
    attackStore.fileRank[square] = {fileMask(fileOf(square)), rankMask(rankOf(square))};
    attackStore.diagonals[square] = {
        self | slowAttacks(square, 0, std::array{Step{1, 1}, Step{-1, -1}}),
        self | slowAttacks(square, 0, std::array{Step{1, -1}, Step{-1, 1}})};
    attackStore.rookLines[square] = self | slowAttacks(square, 0, RookSteps);
    attackStore.bishopLines[square] = self | slowAttacks(square, 0, BishopSteps);
    attackStore.queenLines[square] =
        attackStore.rookLines[square] | attackStore.bishopLines[square];
    attackStore.pawnAttacks[White][square] = pawnSetAttacks(White, self);
    attackStore.pawnAttacks[Black][square] = pawnSetAttacks(Black, self);
    const int file = fileOf(square);
    attackStore.adjacentFiles[square] =
        (file > 0 ? fileMask(file - 1) : 0) | (file < 7 ? fileMask(file + 1) : 0);
  }
}

void initLinesThroughTwo() {
  for (Square a = 0; a < 64; ++a) {
    attackStore.line[a][a] = attackStore.fileRank[a].file;
    for (const Step step : AllSteps) {
      const Bitboard whole =
          bit(a) | slowAttacks(a, 0, std::array{step, Step{-step.file, -step.rank}});
      Bitboard passed = 0;
      int file = fileOf(a) + step.file;
      int rank = rankOf(a) + step.rank;
      for (; isOnBoard(file, rank); file += step.file, rank += step.rank) {
        const Square b = makeSquare(file, rank);
        attackStore.between[a][b] = passed;
        attackStore.line[a][b] = whole;
        passed |= bit(b);
      }
    }
  }
}

void initSpans() {
  for (const Colour colour : {White, Black}) {
    const int lastRank = colour == White ? 7 : 0;
    for (Square square = 0; square < 64; ++square) {
      const int file = fileOf(square);
      const Square goal = makeSquare(file, lastRank);
      attackStore.frontSpan[colour][square] = attackStore.between[square][goal] | bit(goal);
      Bitboard span = attackStore.between[square][goal];
      if (file > 0) span |= attackStore.between[square - 1][goal - 1];
      if (file < 7) span |= attackStore.between[square + 1][goal + 1];
      attackStore.passedSpan[colour][square] = span;
    }
  }
}

// Built backwards from the promotion square: a pawn's cone is the one of the square before it,
// together with that square, widened by a king step (a knight jump). A pawn on its second rank
// steps two squares at once, so its cone is not widened.
void initPawnCones() {
  for (const Colour colour : {White, Black}) {
    const int push = colour == White ? 8 : -8;
    for (int relative = 6; relative >= 1; --relative) {
      for (int file = 0; file < 8; ++file) {
        const Square square = makeSquare(file, colour == White ? relative : 7 - relative);
        const Square front = square + push;
        const Bitboard kingSet = bit(front) | attackStore.pawnCone[colour][front];
        const Bitboard knightSet = bit(front) | attackStore.pawnKnightCone[colour][front];
        const bool doubleStep = relative == 1;
        attackStore.pawnCone[colour][square] = doubleStep ? kingSet : grow(kingSet);
        attackStore.pawnKnightCone[colour][square] =
            doubleStep ? knightSet : knightSet | knightSpread(knightSet);
      }
    }
  }
}

}  // namespace

Bitboard knightSpread(Bitboard set) {
  Bitboard spread = 0;
  while (set != 0) spread |= knightAttacks[popLowest(set)];
  return spread;
}

void initTables() {
  initMagics(attackStore.bishopMagic, bishopStore, BishopSteps, BishopFactors, BishopIndexBits);
  initMagics(attackStore.rookMagic, rookStore, RookSteps, RookFactors, RookIndexBits);
  initLines();
  initLinesThroughTwo();
  initSpans();
  for (Square square = 0; square < 64; ++square) {
    attackStore.kingAttacks[square] = stepSet(square, AllSteps);
    attackStore.knightAttacks[square] = stepSet(square, KnightSteps);
  }
  for (Square square = 0; square < 64; ++square) {
    attackStore.twoKnightMoves[square] = knightSpread(knightAttacks[square]);
  }
  initPawnCones();
}

}  // namespace quill
