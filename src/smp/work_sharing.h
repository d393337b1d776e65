// Who works where in the parallel search: idle threads are handed split points, or look for one
// themselves, and a cut-off stops all who work below it.
//
// A worker works at its currentSplit, is available (counted in idleCount), or has been assigned a
// split point that it has not joined yet.
//
// Threads: any search thread, for its own worker, holding no lock where nothing else is said.
#pragma once

#include "search/worker.h"

namespace quill {

// The split point that the worker works at or was given; none above all split points.
inline SplitPoint* splitOf(const Worker& worker) {
  // Acquire pairs with the release of whoever assigned it: path and parent are then readable.
  return worker.currentSplit.load(std::memory_order_acquire);
}

// Requires: the worker's spinLock is held.
inline void setSplit(Worker& worker, SplitPoint* split) {
  worker.currentSplit.store(split, std::memory_order_release);
}

// Gives the split point, which is the owner's currentSplit, to every idle worker that may take it.
// Does nothing when another thread is handing out work at this moment.
void handOut(Worker& owner, SplitPoint& split);

// Finds the worker the deepest split point where it may help, or declares it available. Does
// nothing once its search is stopped.
void findWork(Worker& worker);

// The worker is no longer available. Requires: its spinLock is held.
void withdrawAvailability(Worker& worker);

// Stops everyone who works at the split point or below it.
void killWorkers(Worker& killer, const SplitPoint& split);

}  // namespace quill
