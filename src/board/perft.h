// Counts of move trees, the classic test of a move generator.
#pragma once

#include <cstdint>

#include "board/board.h"

namespace quill {

// The number of move sequences of that length; a depth below 1 counts as 1. The moves of the last
// ply are counted without being written or made. Leaves the Board as it was, but that its attack
// information may be refreshed.
// Requires: ply + depth < StackSize.
std::uint64_t perft(Board& board, int depth);

}  // namespace quill
