// The state that each search thread keeps for the static evaluation.
//
// Threads: an Evaluator belongs to one thread; only its EvalTables are shared, and read-only.
#pragma once

#include <array>
#include <cstdint>

#include "board/board.h"
#include "eval/material.h"
#include "eval/pawn_hash.h"
#include "eval/weights.h"
#include "platform/prefetch.h"

namespace quill {

// Results by position. Neither the fifty-move count nor the weights are part of the key.
struct EvalCache {
  static constexpr unsigned Size = 4096;

  struct alignas(16) Entry {
    std::uint64_t key;   // Board::key ^ side to move; 0 in an empty entry
    std::int32_t score;  // the result, centipawns, side to move's view
  };

  static std::uint64_t keyOf(const Board& board) {
    return board.key ^ static_cast<std::uint64_t>(board.stm);
  }
  Entry& operator[](std::uint64_t key) { return entries[key & (Size - 1)]; }
  const Entry& operator[](std::uint64_t key) const { return entries[key & (Size - 1)]; }

  std::array<Entry, Size> entries{};
};

struct Evaluator {
  // Starts with an empty cache and a pawn hash of one entry.
  // Requires: board and tables outlive the Evaluator.
  Evaluator(const Board& evaluated, const EvalTables& evalTables);
  Evaluator(const Evaluator&) = delete;
  Evaluator& operator=(const Evaluator&) = delete;

  const Board& board;
  const EvalTables& tables;
  PawnHash pawnHash;
  std::uint64_t evalCount = 0;  // calls of evaluate, cache hits included
  const PawnEntry* pawnEntry;   // what the last probe of the pawn hash gave
  // King shelter by colour, computed in the call in progress for the other colour's king attack.
  std::array<int, 2> shelter{};
  EvalCache evalCache;
  MaterialTable material;
};

// Empties the cache and the pawn hash.
void clearEvaluator(Evaluator& evaluator);

// Prefetches what the caches hold of the board and of its pawns. To be called right after a move.
inline void prefetchEvaluation(const Evaluator& evaluator) {
  const PawnHash& hash = evaluator.pawnHash;
  platform::prefetch(hash.table + (evaluator.board.pawnKey & hash.mask));
  platform::prefetch(&evaluator.evalCache[EvalCache::keyOf(evaluator.board)]);
}

}  // namespace quill
