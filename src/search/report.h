// What the search tells: to its listener, and to a person at the console in fixed columns.
#pragma once

#include <cstdint>

#include "board/move.h"

namespace quill {

struct SearchState;
struct SearchStats;
struct Worker;

// A count made short for display: divided by 1024 while it exceeds 99999, with the unit's letter.
struct ShortCount {
  int value;
  char unit;  // ' ', 'k', 'm', 'g', 't', '?' behind them
};
ShortCount shortenCount(std::uint64_t value);

// The head of every console line (depth, time, nodes, score), followed by a blank and the text when
// there is one; no newline. Nothing when the search is quiet.
void printSearchLine(const SearchState& state, int score, const char* text);

// A root move that failed high or low: the head, the text and, right behind it, the move.
void printFailLine(const SearchState& state, int score, const char* text, Move move);

// The line at the slot of the root moves: to the listener, and in algebraic notation to the
// console. Plays the line on the master's board and takes it back.
void printPvLine(SearchState& state, int slot);

// The end of an iteration: the reason and the ratio of nodes after and before it.
void printIteration(const SearchState& state, int score, const char* reason, float nodeRatio,
                    const char* suffix);

// The statistics after a search: counters summed over the workers, elapsed seconds, table size.
void printStatistics(const SearchStats& stats, double seconds, std::uint64_t entries);

// One thread's part in the parallel search: its split points, where its time went, its nodes.
void printThreadStatistics(const Worker& worker);

}  // namespace quill
