#include "smp/split_point.h"

#include <algorithm>
#include <cassert>
#include <mutex>
#include <span>

#include "search/line_walk.h"
#include "search/worker.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill {

namespace {

using Guard = std::lock_guard<platform::SpinLock>;

constexpr int HandOutBracket = 100;  // lowers idleCount below 0 while one thread hands out work

// Yields while there is something to wait for; after many fruitless yields sleeps a little, so that
// idle threads leave the processors to others.
class Backoff {
 public:
  void pause() {
    if (++tries_ < YieldsBeforeSleep) {
      platform::yieldThread();
    } else {
      platform::sleepMicroseconds(SleepMicroseconds);
    }
  }

 private:
  static constexpr int YieldsBeforeSleep = 1000;
  static constexpr unsigned SleepMicroseconds = 50;
  int tries_ = 0;
};

SplitPoint* splitOf(const Worker& worker) {
  // Acquire pairs with the release of whoever assigned it: path and parent are then readable.
  return worker.currentSplit.load(std::memory_order_acquire);
}

void setSplit(Worker& worker, SplitPoint* split) {
  worker.currentSplit.store(split, std::memory_order_release);
}

bool isStopped(const Worker& worker) { return worker.stopped.load(std::memory_order_relaxed); }
bool isUnwinding(const Worker& worker) { return worker.stop.load(std::memory_order_relaxed); }

// Whether the split point is the ancestor or lies below it. The chain of parents stays as it is
// while some worker is attached to the split point and its spinLock is held.
bool isAtOrBelow(const SplitPoint* split, const SplitPoint* ancestor) {
  for (; split != nullptr; split = split->parent) {
    if (split == ancestor) return true;
  }
  return false;
}

void detach(SplitPoint& split) {
  // Release: everything done at the split point lies before the owner's sight of the new count.
  split.workers.fetch_sub(1, std::memory_order_acq_rel);
}

bool hasHelpers(const SplitPoint& split) {
  return split.workers.load(std::memory_order_acquire) > 0;
}

void waitUntilReady(const SplitPoint& split) {
  Backoff backoff;
  while (split.stage.load(std::memory_order_acquire) < SplitReady) backoff.pause();
}

// Gives the split point to every idle worker that may take it. Does nothing when another thread is
// handing out work at this moment.
void handOut(Worker& owner, SplitPoint& split) {
  ThreadPool& pool = owner.pool;
  if (pool.idleCount.load() <= 0 || !pool.poolLock.try_lock()) return;
  const Guard poolGuard(pool.poolLock, std::adopt_lock);
  if (pool.idleCount.load() <= 0) return;
  pool.idleCount.fetch_sub(HandOutBracket);
  int assigned = 0;
  for (int i = 0; i < pool.threadCount(); ++i) {
    Worker& worker = *pool.workers[i];
    if (!worker.available.load(std::memory_order_relaxed)) continue;
    const Guard guard(worker.spinLock);
    if (!worker.available.load(std::memory_order_relaxed)) continue;
    // An owner that waits for its helpers may only take what lies below its own split point:
    // anything else could keep it from returning when its helpers are done.
    const SplitPoint* current = splitOf(worker);
    if (current != nullptr && !isAtOrBelow(&split, current)) continue;
    split.workers.fetch_add(1, std::memory_order_relaxed);
    worker.available.store(false, std::memory_order_relaxed);
    setSplit(worker, &split);
    ++assigned;
  }
  pool.idleCount.fetch_add(HandOutBracket - assigned);
}

// Stops everyone who works at the split point or below it.
void killWorkers(ThreadPool& pool, const SplitPoint& split) {
  const Guard poolGuard(pool.poolLock);
  for (int i = 0; i < pool.threadCount(); ++i) {
    Worker& worker = *pool.workers[i];
    const Guard guard(worker.spinLock);
    if (!isAtOrBelow(splitOf(worker), &split)) continue;
    worker.stop.store(true, std::memory_order_relaxed);
    worker.kills.fetch_add(1, std::memory_order_relaxed);
  }
}

// A worker's best at a split point, before it is the split point's.
struct LocalBest {
  int score;
  Move move;
};

void publishCutOff(SplitPoint& split, Move move, int score) {
  split.moveCount.store(0, std::memory_order_relaxed);
  const Guard guard(split.lock);
  if (score > split.bestScore.load(std::memory_order_relaxed)) {
    split.bestScore.store(score, std::memory_order_relaxed);
    split.bestMove = move;
  }
  split.stage.store(SplitFinished, std::memory_order_release);
}

// Raises the shared alpha, and the line with it.
void publishAlpha(const Worker& worker, SplitPoint& split, Move move, int score) {
  if (score <= split.alpha.load(std::memory_order_relaxed)) return;
  const Guard guard(split.lock);
  if (score <= split.alpha.load(std::memory_order_relaxed) || split.isCutOff()) return;
  split.alpha.store(score, std::memory_order_relaxed);
  split.bestScore.store(score, std::memory_order_relaxed);
  split.bestMove = move;
  const auto& rest = worker.pv[split.node.ply + 1];
  split.pv[0] = move;
  int length = 0;
  for (; length < MaxSearchPly - 2 && rest[length] != NoMove; ++length)
    split.pv[length + 1] = rest[length];
  split.pv[length + 1] = NoMove;
}

void publishBest(SplitPoint& split, const LocalBest& best) {
  const Guard guard(split.lock);
  if (best.score <= split.bestScore.load(std::memory_order_relaxed)) return;
  split.bestScore.store(best.score, std::memory_order_relaxed);
  split.bestMove = best.move;
}

// The move loop at a split point, run by the owner and by every helper, each on its own board at
// the node.
void searchSplitPoint(Worker& worker, SplitPoint& split) {
  const NodeParams& node = split.node;
  const int entryAlpha = split.alpha.load(std::memory_order_relaxed);
  LocalBest best{split.bestScore.load(std::memory_order_relaxed), NoMove};
  const UndoInfo undo = worker.board;
  while (!isUnwinding(worker)) {
    const int i = split.nextIndex.fetch_add(1, std::memory_order_relaxed);
    if (i >= split.moveCount.load(std::memory_order_relaxed)) {
      if (best.score <= entryAlpha && best.move != NoMove) publishBest(split, best);
      return;
    }
    const Move move = split.moves[i];
    if (split.firstMove != NoMove && isSameMove(move, split.firstMove)) continue;
    const int alpha = split.alpha.load(std::memory_order_relaxed);
    const MoveResult result =
        searchMove(worker, node, undo, move, i >= split.lateIndex, split.threats[i], alpha, true);
    // The result of a search that was killed is worth nothing.
    if (result.kind == MoveResult::Stopped || isUnwinding(worker)) return;
    if (result.score <= best.score) continue;
    best = {result.score, move};
    if (result.kind == MoveResult::Pruned) continue;
    if (result.score >= node.beta) {
      publishCutOff(split, move, result.score);
      killWorkers(worker.pool, split);
      return;
    }
    publishAlpha(worker, split, move, result.score);
  }
}

// Whether the worker may help at the other's split point. Requires: the other's spinLock is held.
bool isWorthJoining(const Worker& other, const SplitPoint* split, const SplitPoint* own) {
  if (split == nullptr || isStopped(other) || isUnwinding(other)) return false;
  if (split->stage.load(std::memory_order_acquire) != SplitReady || split->isCutOff()) return false;
  if (split->nextIndex.load(std::memory_order_relaxed) >=
      split->moveCount.load(std::memory_order_relaxed)) {
    return false;
  }
  return own == nullptr || isAtOrBelow(split, own);
}

// The deepest split point that the worker may help at, reserved for it; none when there is none.
// Requires: the pool's lock is held.
SplitPoint* reserveDeepest(Worker& worker) {
  ThreadPool& pool = worker.pool;
  const SplitPoint* own = splitOf(worker);
  SplitPoint* chosen = nullptr;
  for (int i = 0; i < pool.threadCount(); ++i) {
    Worker& other = *pool.workers[i];
    if (&other == &worker) continue;
    const Guard guard(other.spinLock);
    SplitPoint* split = splitOf(other);
    if (!isWorthJoining(other, split, own)) continue;
    if (chosen != nullptr && split->node.depth <= chosen->node.depth) continue;
    split->workers.fetch_add(1, std::memory_order_relaxed);
    if (chosen != nullptr) detach(*chosen);
    chosen = split;
  }
  return chosen;
}

// Finds the worker a split point to help at, or declares it available.
// Requires: the worker's spinLock is not held by itself.
void findWork(Worker& worker) {
  ThreadPool& pool = worker.pool;
  const Guard poolGuard(pool.poolLock);
  if (isStopped(worker)) return;
  SplitPoint* split = reserveDeepest(worker);
  const Guard guard(worker.spinLock);
  if (split == nullptr) {
    worker.available.store(true, std::memory_order_relaxed);
    pool.idleCount.fetch_add(1);
  } else if (isUnwinding(worker)) {
    detach(*split);
  } else {
    setSplit(worker, split);
  }
}

// Requires: the worker's spinLock is held.
void withdrawAvailability(Worker& worker) {
  if (!worker.available.load(std::memory_order_relaxed)) return;
  worker.available.store(false, std::memory_order_relaxed);
  worker.pool.idleCount.fetch_sub(1);
}

// Clears the stop flag and sets it again when there is still a reason. Under the spinLock: a kill
// sets the cut-off of an ancestor first and the flag, under this lock, later, so that it is either
// seen here or comes after.
void checkStop(Worker& worker, const SplitPoint& split) {
  const Guard guard(worker.spinLock);
  worker.stop.exchange(false);  // a full fence: the reasons are read behind it
  // A limit ends the search of all. Were it this worker's alone, the move that it leaves unfinished
  // at a split point above would be missing in the result of those that go on.
  if (worker.timeControl.isTimeUp() ||
      worker.timeControl.isNodeLimitReached(worker.stats.searched())) {
    worker.pool.endSearch();
  }
  bool mustStop = worker.stopped.load() || worker.pool.rootStop.load();
  for (const SplitPoint* above = split.parent; above != nullptr && !mustStop;
       above = above->parent) {
    mustStop = above->isCutOff();
  }
  if (mustStop) worker.stop.store(true, std::memory_order_relaxed);
}

// Brings the board from the given ply to the split point's node and takes part there.
void searchFrom(Worker& worker, SplitPoint& split, int fromPly) {
  waitUntilReady(split);
  LineWalk walk(worker.board);
  walk.replayMoves(std::span(split.path).subspan(fromPly, split.node.ply - fromPly));
  account(worker, AdminTime);
  // A search that ended meanwhile is not to be gone on with.
  if (worker.pool.rootStop.load(std::memory_order_relaxed))
    worker.stop.store(true, std::memory_order_relaxed);
  searchSplitPoint(worker, split);
  account(worker, WorkTime);
}

// The owner of a split point helps at another one below it.
void joinBelow(Worker& worker, SplitPoint& own) {
  SplitPoint& split = *splitOf(worker);
  ++worker.joins;
  searchFrom(worker, split, own.node.ply);
  {
    const Guard guard(worker.spinLock);
    setSplit(worker, &own);
  }
  detach(split);
  checkStop(worker, own);
  if (hasHelpers(own) && !own.isCutOff() && !isUnwinding(worker)) findWork(worker);
  account(worker, AdminTime);
}

// The owner has found no more moves at its split point: it helps below until its helpers are done.
void helpUntilDone(Worker& worker, SplitPoint& split) {
  account(worker, WorkTime);
  if (hasHelpers(split) && !split.isCutOff() && !isUnwinding(worker) && !isStopped(worker)) {
    findWork(worker);
    Backoff backoff;
    while (hasHelpers(split) && !split.isCutOff() && !isStopped(worker)) {
      if (!worker.available.load(std::memory_order_relaxed) && splitOf(worker) != &split) {
        account(worker, MasterWaitTime);
        joinBelow(worker, split);
        backoff = {};
      } else {
        backoff.pause();
      }
    }
  }
  account(worker, MasterWaitTime);
  {
    const Guard guard(worker.spinLock);
    withdrawAvailability(worker);
    if (SplitPoint* assigned = splitOf(worker); assigned != &split) detach(*assigned);
    setSplit(worker, split.parent);
  }
  checkStop(worker, split);
  account(worker, AdminTime);
  Backoff backoff;
  while (hasHelpers(split)) backoff.pause();
  account(worker, SlaveWaitTime);
}

void fillSplitPoint(SplitPoint& split, const SplitRequest& request) {
  std::copy_n(request.moves, request.moveCount, split.moves.begin());
  std::copy_n(request.threats, request.moveCount, split.threats.begin());
  split.moveCount.store(request.moveCount, std::memory_order_relaxed);
  split.nextIndex.store(0, std::memory_order_relaxed);
  split.stage.store(SplitHasMoves, std::memory_order_release);
  split.alpha.store(request.alpha, std::memory_order_relaxed);
  split.bestScore.store(request.best, std::memory_order_relaxed);
  split.bestMove = request.bestMove;
  split.firstMove = request.excluded;
  split.lateIndex = request.lateIndex;
  split.pv[0] = request.bestMove;
  split.pv[1] = NoMove;
  split.stage.store(SplitReady, std::memory_order_release);
}

}  // namespace

bool canSplit(const Worker& worker) {
  return worker.pool.idleCount.load(std::memory_order_relaxed) > 0 &&
         worker.splitsInUse < MaxSplitPoints;
}

SplitResult trySplit(Worker& worker, const SplitRequest& request) {
  account(worker, WorkTime);
  SplitPoint& split = worker.splitPoints[worker.splitsInUse];
  split.workers.store(0, std::memory_order_relaxed);
  split.stage.store(SplitPublished, std::memory_order_relaxed);
  split.node = request.node;
  const Board& board = worker.board;
  std::copy_n(board.moves.begin() + (board.ply - request.node.ply + 1), request.node.ply,
              split.path.begin());
  split.parent = splitOf(worker);
  {
    const Guard guard(worker.spinLock);
    if (isUnwinding(worker)) return {};
    setSplit(worker, &split);
  }
  ++worker.splitsInUse;
  handOut(worker, split);
  if (!hasHelpers(split)) {
    // Nobody came, and nobody can reserve a split point before it is ready.
    const Guard guard(worker.spinLock);
    setSplit(worker, split.parent);
    --worker.splitsInUse;
    return {};
  }
  ++worker.splits;
  fillSplitPoint(split, request);
  account(worker, AdminTime);
  searchSplitPoint(worker, split);
  helpUntilDone(worker, split);
  --worker.splitsInUse;
  return {true, split.bestScore.load(std::memory_order_relaxed), split.bestMove, split.pv.data()};
}

void runSlaveLoop(Worker& worker) {
  account(worker, IdleTime);
  findWork(worker);
  for (;;) {
    account(worker, AdminTime);
    Backoff backoff;
    while (!isStopped(worker) && splitOf(worker) == nullptr) backoff.pause();
    account(worker, WorkWaitTime);
    SplitPoint* split = nullptr;
    {
      const Guard guard(worker.spinLock);
      split = splitOf(worker);
      if (isStopped(worker)) {
        withdrawAvailability(worker);
        if (split != nullptr) detach(*split);
        setSplit(worker, nullptr);
        return;
      }
    }
    account(worker, AdminTime);
    ++worker.joins;
    searchFrom(worker, *split, 0);
    {
      const Guard guard(worker.spinLock);
      setSplit(worker, nullptr);
      worker.stop.exchange(false);  // a kill of the split point it has left means it no more
    }
    detach(*split);
    findWork(worker);
  }
}

}  // namespace quill
