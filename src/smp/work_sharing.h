// Who works where in the parallel search: idle threads are handed split points, or look for one
// themselves, and a cut-off stops all who work below it.
//
// A worker works at its currentSplit, is available (counted in idleCount), or has been assigned a
// split point that it has not joined yet.
//
// Threads: any search thread, for its own worker, holding no lock where nothing else is said.
#pragma once

#include "search/search_state.h"

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

// Whether some idle thread could be had for a node that the worker splits now: one that works
// nowhere, or the owner of a split point above. A hint, taken without a lock: an owner that waits
// for its helpers may only help below its own split point, and must not make all others try.
inline bool isHelpInReach(const Worker& worker) {
  const SearchState& state = worker.state;
  const int idle = state.idleCount.load(std::memory_order_relaxed);
  if (idle <= 0 || state.poolLock.isHeld()) return false;
  if (idle > state.waitingOwners.load(std::memory_order_relaxed)) return true;
  for (const SplitPoint* split = splitOf(worker); split != nullptr; split = split->parent) {
    if (split->ownerWaits.load(std::memory_order_relaxed)) return true;
  }
  return false;
}

// Gives the split point, which is the owner's currentSplit, to idle workers that may take it, as
// many as wanted. Does nothing when another thread is handing out work at this moment.
void handOut(Worker& owner, SplitPoint& split, int wanted);

// Finds the worker the deepest split point where it may help, or declares it available. Does
// nothing once its search is stopped.
void findWork(Worker& worker);

// The split point that the waiting worker was given, if it is ready and has a move left: the worker
// has joined it. Otherwise none, and one that has no move left was exchanged for other work.
SplitPoint* joinAssigned(Worker& worker);

// The worker waits no longer: it gives back what it was given, and works at the next split point
// (none: at nothing).
void stopWaiting(Worker& worker, SplitPoint* next);

// Makes those available again who were given the owner's split point and have not joined it. To be
// called when no move is left there: the owner need not wait for a thread that has yet to wake up.
void takeBack(Worker& owner, const SplitPoint& split);

// Stops everyone who works at the split point or below it; whoever was only given it is available
// again.
void killWorkers(Worker& killer, const SplitPoint& split);

}  // namespace quill
