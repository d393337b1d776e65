// The numbers that stand for squares, colours and pieces, and helpers for them.
//
// Every other layer uses these codes. Square = rank * 8 + file, both counted from 0, so that
// a1 = 0, h1 = 7, a8 = 56 and h8 = 63. A Bitboard is a set of squares, bit n for square n.
#pragma once

#include <bit>
#include <cstdint>

namespace quill {

using Bitboard = std::uint64_t;
using Square = int;  // 0..63
using Colour = int;  // White or Black; the other colour is colour ^ 1

enum : Colour { White = 0, Black = 1 };

enum PieceType : int { NoPiece, Pawn, Knight, Bishop, Rook, Queen, King };

// A piece code is type | (8 << colour): 9..14 white, 17..22 black, 0 for an empty square.
using PieceCode = std::uint8_t;

// Capacity of a move list; no chess position has more than 218 legal moves.
inline constexpr int MaxMoves = 256;

// clang-format off
enum : Square {
  A1, B1, C1, D1, E1, F1, G1, H1,
  A2, B2, C2, D2, E2, F2, G2, H2,
  A3, B3, C3, D3, E3, F3, G3, H3,
  A4, B4, C4, D4, E4, F4, G4, H4,
  A5, B5, C5, D5, E5, F5, G5, H5,
  A6, B6, C6, D6, E6, F6, G6, H6,
  A7, B7, C7, D7, E7, F7, G7, H7,
  A8, B8, C8, D8, E8, F8, G8, H8,
};
// clang-format on

// Castling rights, the bits of Board::castling.
enum : std::uint8_t { WhiteShort = 1, BlackShort = 2, WhiteLong = 4, BlackLong = 8 };

// Letters by piece type, a blank where there is none.
inline constexpr char PieceLetters[] = " PNBRQK";
inline constexpr char BlackPieceLetters[] = " pnbrqk";
inline constexpr char PromotionLetters[] = "  NBRQK";

inline constexpr Bitboard FileA = 0x0101010101010101;
inline constexpr Bitboard FileH = FileA << 7;
inline constexpr Bitboard NotFileA = ~FileA;  // what a shift towards the h-file may land on
inline constexpr Bitboard NotFileH = ~FileH;  // what a shift towards the a-file may land on
inline constexpr Bitboard Rank1 = 0xFF;

constexpr int typeOf(PieceCode code) { return code & 7; }
constexpr bool belongsTo(PieceCode code, Colour colour) { return (code & (8 << colour)) != 0; }
constexpr PieceCode makeCode(Colour colour, int type) {
  return static_cast<PieceCode>(type | (8 << colour));
}

constexpr int fileOf(Square square) { return square & 7; }
constexpr int rankOf(Square square) { return square >> 3; }
constexpr Square makeSquare(int file, int rank) { return rank * 8 + file; }
// Rank counted from the colour's own side, 0..7.
constexpr int relativeRank(Colour colour, Square square) {
  return colour == White ? rankOf(square) : 7 - rankOf(square);
}
// The square as the colour sees it: the board is turned upside down for Black.
constexpr Square relativeSquare(Colour colour, Square square) {
  return colour == White ? square : square ^ 56;
}
constexpr Bitboard rankMask(int rank) { return Rank1 << (8 * rank); }
constexpr Bitboard fileMask(int file) { return FileA << file; }
// The rank with this index (0..7) counted from the colour's own side.
constexpr Bitboard relativeRankMask(Colour colour, int rank) {
  return rankMask(colour == White ? rank : 7 - rank);
}

constexpr Bitboard bit(Square square) { return Bitboard{1} << square; }
constexpr bool contains(Bitboard set, Square square) { return ((set >> square) & 1) != 0; }
constexpr int count(Bitboard set) { return std::popcount(set); }
constexpr bool moreThanOne(Bitboard set) { return (set & (set - 1)) != 0; }
// Requires: set is not empty.
constexpr Square lowestSquare(Bitboard set) { return std::countr_zero(set); }
// Takes the lowest square out of the set and returns it. Requires: set is not empty.
constexpr Square popLowest(Bitboard& set) {
  const Square square = std::countr_zero(set);
  set &= set - 1;
  return square;
}

// The squares one rank ahead of each square of the set, in the colour's direction.
constexpr Bitboard shiftForward(Colour colour, Bitboard set) {
  return colour == White ? set << 8 : set >> 8;
}
// The squares that pawns of the colour on the set attack towards the a-file.
constexpr Bitboard pawnAttacksWest(Colour colour, Bitboard pawns) {
  return (colour == White ? pawns << 7 : pawns >> 9) & NotFileH;
}
// The squares that pawns of the colour on the set attack towards the h-file.
constexpr Bitboard pawnAttacksEast(Colour colour, Bitboard pawns) {
  return (colour == White ? pawns << 9 : pawns >> 7) & NotFileA;
}
constexpr Bitboard pawnSetAttacks(Colour colour, Bitboard pawns) {
  return pawnAttacksWest(colour, pawns) | pawnAttacksEast(colour, pawns);
}

}  // namespace quill
