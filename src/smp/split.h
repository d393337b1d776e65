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

#include "search/search_state.h"
#include "smp/split_point.h"
#include "smp/work_sharing.h"

namespace quill {

// What is left of a node's move loop when the node is split.
struct SplitRequest {
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

// Whether a split is worth trying now: a thread can be had and this one may split.
inline bool canSplit(const Worker& worker) {
  return isHelpInReach(worker) && worker.splitsInUse < MaxSplitPoints;
}

// Looks for idle threads, no more than wanted, that help at the node. Its split point, at which
// they wait for searchSplit; none, and nothing has changed, when no thread can be had.
SplitPoint* trySplit(Worker& worker, const NodeParams& node, int wanted);

// Searches the remaining moves together with the threads that trySplit found and returns when all
// are searched. The worker's stop flag says whether the result counts.
SplitResult searchSplit(Worker& worker, SplitPoint& split, const SplitRequest& request);

// The work loop of a slave thread, from its wake until the search is stopped.
void runSlaveLoop(Worker& worker);

}  // namespace quill
