// The moves at the root of a search, with their scores and lines, in order of merit.
#pragma once

#include <array>
#include <span>

#include "board/move.h"
#include "search/params.h"

namespace quill {

struct Worker;

enum RootBound : std::uint8_t { NotSearched = 0, FailLow = 1, FailHigh = 2, Exact = 3 };

struct RootMove {
  Move move;
  std::int16_t score;   // centipawns, side to move's view
  std::uint8_t depth;   // iteration that gave the score, 0 before the first
  std::uint8_t bound;   // RootBound
  std::uint64_t nodes;  // nodes that the last search of this move took
};

struct RootMoveList {
  // Indices into records and lines; order[0] is the best move.
  std::array<std::uint32_t, MaxMoves> order;
  std::array<RootMove, MaxMoves> records;
  // The move itself first, ended by 0.
  std::array<std::array<Move, MaxSearchPly>, MaxMoves> lines;
  std::uint32_t count;

  // Forgets all moves; record 0 then reads as "no move".
  void clear();

  RootMove& at(int slot) { return records[order[static_cast<unsigned>(slot)]]; }
  const RootMove& at(int slot) const { return records[order[static_cast<unsigned>(slot)]]; }
  const Move* lineAt(int slot) const { return lines[order[static_cast<unsigned>(slot)]].data(); }

  Move bestMove() const { return at(0).move; }
  // Makes the move at the slot the first one; those before it keep their order.
  void bringToFront(int slot);
  // The second move of the best line, 0 when there is none.
  Move ponderMove() const;
};

// Lines that a search follows: max(1, min(multiPv, count)).
int lineCount(const RootMoveList& list, int multiPv);

// Fills the list with the legal moves of the worker's board, or with those of the given ones if
// there are any, ordered by static exchange. Returns their number; with none, record 0's score is
// -MateScore in check and 0 otherwise.
int initRootMoves(RootMoveList& list, Worker& worker, std::span<const Move> only = {});

// Moves the record at slot to its place among the first min(multiPv, count); returns its new slot.
int placeRootMove(RootMoveList& list, int multiPv, int slot);

// Sorts the moves behind the first k by nodes, the most expensive first, equal ones as they were.
void sortRootTail(RootMoveList& list, int k);

int bestScore(const RootMoveList& list);
// The lowest score among the first min(multiPv, count), at least one.
int lowestPvScore(const RootMoveList& list, int multiPv);

}  // namespace quill
