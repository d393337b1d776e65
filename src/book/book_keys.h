// The 1024 fixed values whose XOR is the key of a book position. They are part of the file format:
// a book can only be read with the table that it was written with, so they never change.
#pragma once

#include <array>
#include <cstdint>

namespace quill {

// Piece codes of the table; 0 stands for the terms that are no pieces, 4 is not used.
enum BookPiece : int {
  BookNoPiece = 0,
  BookPawn = 1,
  BookKnight = 2,
  BookKing = 3,
  BookBishop = 5,
  BookRook = 6,
  BookQueen = 7,
};

// Place of a piece's value: file and rank 0..7 (a1 is 0, 0), black 1 for a black piece. File 8 is
// let through: it stands for the black bit.
constexpr int bookKeyIndex(int piece, int rank, int black, int file) {
  return (piece << 7) | (rank << 4) | (black << 3) | file;
}

// Places of the terms that are no pieces: the en-passant file takes the place of its number 0..7.
enum BookKeyTerm : int {
  BookWhiteShort = 8,
  BookBlackShort = 9,
  BookWhiteLong = 10,
  BookBlackLong = 11
};

// Seed of the generator that all values but the seventeen given ones come from.
inline constexpr std::uint32_t BookKeySeed = 1024;

// Filled before main begins; read-only.
extern const std::array<std::uint64_t, 1024> BookKeys;

}  // namespace quill
