// The benchmark: fixed positions searched to a fixed depth. The count of nodes tells whether the
// search has changed, the time how fast it is.
#pragma once

#include <cstdint>
#include <span>

namespace quill {

// FEN texts of openings, middle games and endings, and of positions rich in one kind of move.
std::span<const char* const> benchPositions();

// Searches all of them, each with an empty table, one thread and no clock, and returns the nodes.
// It has a table and a thread of its own, and the default options, so that the count is always the
// same. The log stays silent meanwhile. 0 if the system grants no thread.
// Requires: the tables of board/ are built. Blocks.
std::uint64_t searchBenchPositions();

// Does that and prints milliseconds, nodes and speed: "1250 ms, 902487 nodes 721989 nps". Programs
// that test engines look for the number before "nodes" and for the one before "nps".
// On failure: false, after one line on standard error; the system grants no thread.
bool runBench();

}  // namespace quill
