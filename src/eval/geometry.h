// Distances and colours of squares.
#pragma once

#include <algorithm>

#include "board/codes.h"

namespace quill {

inline constexpr Bitboard LightSquares = 0x55AA55AA55AA55AA;

// King steps from a square to a file and rank, which may lie off the board.
constexpr int kingSteps(Square from, int file, int rank) {
  const int files = fileOf(from) > file ? fileOf(from) - file : file - fileOf(from);
  const int ranks = rankOf(from) > rank ? rankOf(from) - rank : rank - rankOf(from);
  return std::max(files, ranks);
}
constexpr int distance(Square a, Square b) { return kingSteps(a, fileOf(b), rankOf(b)); }

}  // namespace quill
