// Counting of move trees, the classic proof of a move generator.
#pragma once

#include <cstdint>

#include "board/board.h"

namespace quill {

// The number of move sequences of the length, those of the last ply counted and not made; a depth
// below 1 counts as 1. Leaves the Board as it was, its attack information refreshed. Requires: ply
// + depth < StackSize.
std::uint64_t perft(Board& board, int depth);

}  // namespace quill
