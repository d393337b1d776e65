// Attack sets and the geometry of the board, precomputed once by initTables and read-only
// afterwards, so that every thread reads them without locking.
//
// Slider attacks come from magic multiplication: a multiplication gathers the occupancy of the
// squares that matter in the top bits, which index the table of attack sets. Lines contain the
// squares that they are looked up by; attack sets never contain the attacker's square.
#pragma once

#include "board/codes.h"

namespace quill {

// One square's part of a magic table.
struct Magic {
  Bitboard mask;          // where a piece can block: the lines without the square and their ends
  std::uint64_t factor;   // the magic multiplier
  const Bitboard* table;  // the square's block of attack sets
  unsigned shift;         // 64 minus the index width
};

struct FileRank {
  Bitboard file;
  Bitboard rank;
};

struct DiagonalPair {
  Bitboard rising;   // in the a1-h8 direction, the square included
  Bitboard falling;  // in the a8-h1 direction, the square included
};

namespace detail {

struct AttackTables {
  Magic rookMagic[64];
  Magic bishopMagic[64];
  Bitboard kingAttacks[64];
  Bitboard knightAttacks[64];
  Bitboard pawnAttacks[2][64];
  Bitboard twoKnightMoves[64];
  FileRank fileRank[64];
  DiagonalPair diagonals[64];
  Bitboard rookLines[64];
  Bitboard bishopLines[64];
  Bitboard queenLines[64];
  Bitboard between[64][64];
  Bitboard line[64][64];
  Bitboard adjacentFiles[64];
  Bitboard frontSpan[2][64];
  Bitboard passedSpan[2][64];
  Bitboard pawnCone[2][64];
  Bitboard pawnKnightCone[2][64];
};

extern AttackTables attackStore;  // written by initTables alone

}  // namespace detail

// Builds every table below. To be called once, before any Board is used and any thread is started.
void initTables();

inline constexpr const auto& rookMagic = detail::attackStore.rookMagic;
inline constexpr const auto& bishopMagic = detail::attackStore.bishopMagic;

// The squares one king step, one knight jump away.
inline constexpr const auto& kingAttacks = detail::attackStore.kingAttacks;
inline constexpr const auto& knightAttacks = detail::attackStore.knightAttacks;
// [colour][square]: what a pawn of the colour on the square attacks; also the squares from which a
// pawn of the other colour attacks the square. Empty on the colour's last rank.
inline constexpr const auto& pawnAttacks = detail::attackStore.pawnAttacks;
// Reachable by two knight jumps, the square itself included.
inline constexpr const auto& twoKnightMoves = detail::attackStore.twoKnightMoves;

inline constexpr const auto& fileRank = detail::attackStore.fileRank;
inline constexpr const auto& diagonals = detail::attackStore.diagonals;
// Rank and file, both diagonals, all four; the square included.
inline constexpr const auto& rookLines = detail::attackStore.rookLines;
inline constexpr const auto& bishopLines = detail::attackStore.bishopLines;
inline constexpr const auto& queenLines = detail::attackStore.queenLines;

// [a][b]: the squares strictly between two squares on a common line; empty when there are none.
inline constexpr const auto& between = detail::attackStore.between;
// [a][b]: the whole line through two squares, edge to edge; empty when they are not on a common
// line; line[s][s] is the file of s.
inline constexpr const auto& line = detail::attackStore.line;

inline constexpr const auto& adjacentFiles = detail::attackStore.adjacentFiles;
// [colour][square]: the squares ahead on the file up to and including the last rank; on the last
// rank the square itself.
inline constexpr const auto& frontSpan = detail::attackStore.frontSpan;
// [colour][square]: the squares ahead on the file and both adjacent files, without the last rank.
inline constexpr const auto& passedSpan = detail::attackStore.passedSpan;

// [colour][square]: the squares from which an enemy king (knight) still catches a pawn of the
// colour that stands on the square. Empty on ranks 1 and 8. For the pawn races of the evaluation.
inline constexpr const auto& pawnCone = detail::attackStore.pawnCone;
inline constexpr const auto& pawnKnightCone = detail::attackStore.pawnKnightCone;

// What a slider attacks: each of its lines up to the first occupied square, which is included
// whatever its colour.
inline Bitboard rookAttacks(Square square, Bitboard occupancy) {
  const Magic& m = rookMagic[square];
  return m.table[((occupancy & m.mask) * m.factor) >> m.shift];
}
inline Bitboard bishopAttacks(Square square, Bitboard occupancy) {
  const Magic& m = bishopMagic[square];
  return m.table[((occupancy & m.mask) * m.factor) >> m.shift];
}
inline Bitboard queenAttacks(Square square, Bitboard occupancy) {
  return rookAttacks(square, occupancy) | bishopAttacks(square, occupancy);
}

// The squares that knights on the set reach in one jump.
Bitboard knightSpread(Bitboard set);
// The set and the squares that kings on it reach in one step.
constexpr Bitboard grow(Bitboard set) {
  Bitboard wide = set | ((set >> 1) & NotFileH);
  wide |= (wide << 1) & NotFileA;
  return wide | (wide << 8) | (wide >> 8);
}

}  // namespace quill
