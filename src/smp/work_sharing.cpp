#include "smp/work_sharing.h"

#include <mutex>

#include "search/search_state.h"

namespace quill {

namespace {

using Guard = std::lock_guard<platform::SpinLock>;

constexpr int HandOutBracket = 100;  // lowers idleCount below 0 while one thread hands out work

// Whether the split point is the ancestor or lies below it. The chain of parents stays as it is
// while some worker is attached to the split point and its spinLock is held.
bool isAtOrBelow(const SplitPoint* split, const SplitPoint* ancestor) {
  for (; split != nullptr; split = split->parent) {
    if (split == ancestor) return true;
  }
  return false;
}

// Counts the worker among those who wait for work, and tells those who may split for it.
// Requires: its spinLock is held, and its currentSplit is where it waits.
void declareAvailable(Worker& worker) {
  worker.available.store(true, std::memory_order_relaxed);
  if (worker.waitsAt != nullptr) {
    worker.waitsAt->ownerWaits.store(true, std::memory_order_relaxed);
    worker.state.waitingOwners.fetch_add(1, std::memory_order_relaxed);
  }
  worker.state.idleCount.fetch_add(1);
}

// The other way round, except for idleCount. Requires: its spinLock is held.
void endAvailability(Worker& worker) {
  worker.available.store(false, std::memory_order_relaxed);
  if (worker.waitsAt != nullptr) {
    worker.waitsAt->ownerWaits.store(false, std::memory_order_relaxed);
    worker.state.waitingOwners.fetch_sub(1, std::memory_order_relaxed);
  }
}

// Gives the worker the split point, at which it is counted already. Requires: its spinLock is held.
void assign(Worker& worker, SplitPoint& split) {
  worker.isAssigned = true;
  setSplit(worker, &split);
}

// The worker leaves what it was given and has not joined. Requires: its spinLock is held.
void dropAssignment(Worker& worker) {
  SplitPoint* const split = splitOf(worker);
  worker.isAssigned = false;
  ++worker.drops;
  setSplit(worker, worker.waitsAt);
  split->detach();
}

// Whether the worker may help at the other's split point. Requires: the other's spinLock is held.
bool isWorthJoining(const Worker& other, const SplitPoint* split, const SplitPoint* own) {
  if (split == nullptr || other.isStopped() || other.isUnwinding()) return false;
  if (split->stage.load(std::memory_order_acquire) < SplitReady || !split->hasMovesLeft()) {
    return false;
  }
  return own == nullptr || isAtOrBelow(split, own);
}

// The deepest split point that the worker may help at, reserved for it; none when there is none.
// Requires: poolLock is held.
SplitPoint* reserveDeepest(Worker& worker) {
  SearchState& state = worker.state;
  const SplitPoint* own = splitOf(worker);
  SplitPoint* chosen = nullptr;
  for (const auto& entry : state.workers) {
    Worker& other = *entry;
    // Most work at nothing that is split; a look tells without the lock.
    if (&other == &worker || splitOf(other) == nullptr) continue;
    const Guard guard(other.spinLock);
    SplitPoint* split = splitOf(other);
    if (!isWorthJoining(other, split, own)) continue;
    if (chosen != nullptr && split->node.depth <= chosen->node.depth) continue;
    split->workers.fetch_add(1, std::memory_order_relaxed);
    if (chosen != nullptr) chosen->detach();
    chosen = split;
  }
  return chosen;
}

}  // namespace

void handOut(Worker& owner, SplitPoint& split, int wanted) {
  SearchState& state = owner.state;
  if (state.idleCount.load() <= 0) return;
  ++owner.poolLocks;
  if (!state.poolLock.try_lock()) return;
  const Guard poolGuard(state.poolLock, std::adopt_lock);
  if (state.idleCount.load() <= 0) return;
  state.idleCount.fetch_sub(HandOutBracket);
  int assigned = 0;
  for (const auto& entry : state.workers) {
    if (assigned == wanted) break;
    Worker& worker = *entry;
    if (!worker.available.load(std::memory_order_relaxed)) continue;
    const Guard guard(worker.spinLock);
    if (!worker.available.load(std::memory_order_relaxed)) continue;
    // An owner that waits for its helpers may only take what lies below its own split point:
    // anything else could keep it from returning when its helpers are done.
    const SplitPoint* current = splitOf(worker);
    if (current != nullptr && !isAtOrBelow(&split, current)) continue;
    split.workers.fetch_add(1, std::memory_order_relaxed);
    endAvailability(worker);
    assign(worker, split);
    ++assigned;
  }
  state.idleCount.fetch_add(HandOutBracket - assigned);
}

void findWork(Worker& worker) {
  SearchState& state = worker.state;
  ++worker.poolLocks;
  const Guard poolGuard(state.poolLock);
  if (worker.isStopped()) return;
  SplitPoint* split = reserveDeepest(worker);
  const Guard guard(worker.spinLock);
  worker.waitsAt = splitOf(worker);
  if (split == nullptr) {
    declareAvailable(worker);
  } else if (worker.isUnwinding()) {
    split->detach();
  } else {
    assign(worker, *split);
  }
}

SplitPoint* joinAssigned(Worker& worker) {
  if (splitOf(worker) == worker.waitsAt) return nullptr;
  {
    const Guard guard(worker.spinLock);
    SplitPoint* const split = splitOf(worker);
    if (!worker.isAssigned || split->stage.load(std::memory_order_acquire) < SplitReady) {
      return nullptr;
    }
    if (split->hasMovesLeft()) {
      worker.isAssigned = false;
      ++worker.joins;
      return split;
    }
    dropAssignment(worker);
  }
  findWork(worker);
  return nullptr;
}

void stopWaiting(Worker& worker, SplitPoint* next) {
  const Guard guard(worker.spinLock);
  if (worker.available.load(std::memory_order_relaxed)) {
    endAvailability(worker);
    worker.state.idleCount.fetch_sub(1);
  }
  if (worker.isAssigned) dropAssignment(worker);
  setSplit(worker, next);
}

void takeBack(Worker& owner, const SplitPoint& split) {
  SearchState& state = owner.state;
  ++owner.poolLocks;
  const Guard poolGuard(state.poolLock);
  for (const auto& entry : state.workers) {
    Worker& worker = *entry;
    if (splitOf(worker) != &split) continue;
    const Guard guard(worker.spinLock);
    if (!worker.isAssigned || splitOf(worker) != &split) continue;
    dropAssignment(worker);
    declareAvailable(worker);
  }
}

void killWorkers(Worker& killer, const SplitPoint& split) {
  SearchState& state = killer.state;
  ++killer.poolLocks;
  const Guard poolGuard(state.poolLock);
  for (const auto& entry : state.workers) {
    Worker& worker = *entry;
    const Guard guard(worker.spinLock);
    if (!isAtOrBelow(splitOf(worker), &split)) continue;
    // Who has not begun there need not stop, unless it waits below the split point itself.
    if (worker.isAssigned && !isAtOrBelow(worker.waitsAt, &split)) {
      dropAssignment(worker);
      declareAvailable(worker);
      continue;
    }
    worker.stop.store(true, std::memory_order_relaxed);
    worker.kills.fetch_add(1, std::memory_order_relaxed);
  }
}

}  // namespace quill
