// The search of one node by several threads.
//
// The owner of a split point takes moves from it like its helpers do. Helpers bring their own
// boards to the node by replaying the path. A cut-off kills the search of all who work at the split
// point or below it. Once no move is left for the owner it helps below its own split point until
// its helpers are done.
//
// The main search splits its nodes here, and what is split is searched move by move by the main
// search: the two call each other, and are the only files of the search that do.
#pragma once

#include <optional>

#include "search/search_state.h"
#include "smp/split_point.h"

namespace quill {

// A node at the point of its move loop where it may be split.
struct SplitRequest {
  const NodeParams& node;
  int alpha;
  int best;
  Move bestMove;
  Move excluded;
  const Move* moves;   // the remaining moves, the one about to be searched first
  const int* threats;  // their flags
  int moveCount;
  int lateIndex;  // among the remaining
};

// What the search of all remaining moves came to.
struct SplitResult {
  int best;
  Move bestMove;
  const Move* pv;  // of the best move; valid until the worker splits again
};

// Whether a split is worth trying now: a thread is idle and this one may split.
inline bool canSplit(const Worker& worker) {
  return worker.state.idleCount.load(std::memory_order_relaxed) > 0 &&
         worker.splitsInUse < MaxSplitPoints;
}

// Shares the remaining moves of the node with idle threads and returns when all are searched; does
// nothing, and gives nothing, when no thread can be had. After a split the worker's stop flag says
// whether the result counts.
std::optional<SplitResult> trySplit(Worker& worker, const SplitRequest& request);

// The work loop of a slave thread, from its wake until the search is stopped.
void runSlaveLoop(Worker& worker);

}  // namespace quill
