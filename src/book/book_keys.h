// The 1024 fixed values whose XOR is the key of a book position. They are part of the file format:
// a book can only be read with the table that it was written with, so they never change.
#pragma once

#include <array>
#include <cstdint>

namespace quill {

// Piece codes of the table; 0 is for the terms that are not pieces, 4 is not used.
enum BookPiece : int {
  BookNoPiece = 0,
  BookPawn = 1,
  BookKnight = 2,
  BookKing = 3,
  BookBishop = 5,
  BookRook = 6,
  BookQueen = 7,
};

// Index of a piece's value: file and rank 0..7 (a1 is 0, 0), black 1 for a black piece. A file of 8
// is allowed and sets the black bit.
constexpr int bookKeyIndex(int piece, int rank, int black, int file) {
  return (piece << 7) | (rank << 4) | (black << 3) | file;
}

// Indices of the terms that are not pieces; 0..7 are the en-passant files.
enum BookKeyTerm : int {
  BookWhiteShort = 8,
  BookBlackShort = 9,
  BookWhiteLong = 10,
  BookBlackLong = 11
};

// Seed of the generator of all values but the seventeen that are given.
inline constexpr std::uint32_t BookKeySeed = 1024;

// Filled before main begins; read-only.
extern const std::array<std::uint64_t, 1024> BookKeys;

}  // namespace quill
