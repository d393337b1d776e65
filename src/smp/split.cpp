#include "smp/split.h"

#include <algorithm>
#include <mutex>
#include <span>

#include "search/line_walk.h"
#include "search/node.h"
#include "search/search.h"
#include "smp/work_sharing.h"

namespace quill {

namespace {

using Guard = std::lock_guard<platform::SpinLock>;

// Spins for a moment, then yields while there is something to wait for; after many fruitless yields
// sleeps a little, so that idle threads leave the processors to others.
class Backoff {
 public:
  void pause() {
    if (++tries_ < SpinsBeforeYield) {
      platform::pauseProcessor();
    } else if (tries_ < YieldsBeforeSleep) {
      platform::yieldThread();
    } else {
      platform::sleepMicroseconds(SleepMicroseconds);
    }
  }

 private:
  static constexpr int SpinsBeforeYield = 30;
  static constexpr int YieldsBeforeSleep = 1000;
  static constexpr unsigned SleepMicroseconds = 50;
  int tries_ = 0;
};

// A worker's best at a split point, before it is published.
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
  joinLine(split.pv.data(), move, worker.pv[split.node.ply + 1].data());
}

void publishBest(SplitPoint& split, const LocalBest& best) {
  const Guard guard(split.lock);
  if (best.score <= split.bestScore.load(std::memory_order_relaxed)) return;
  split.bestScore.store(best.score, std::memory_order_relaxed);
  split.bestMove = best.move;
}

// The move loop at a split point, run by the owner and by every helper, each on a board of its own.
// Whether there was a move to search.
bool searchSplitPoint(Worker& worker, SplitPoint& split) {
  const NodeParams& node = split.node;
  const int entryAlpha = split.alpha.load(std::memory_order_relaxed);
  LocalBest best{split.bestScore.load(std::memory_order_relaxed), NoMove};
  const UndoInfo undo = worker.board;
  bool hasSearched = false;
  while (!worker.isUnwinding()) {
    const int i = split.nextIndex.fetch_add(1, std::memory_order_relaxed);
    if (i >= split.moveCount.load(std::memory_order_relaxed)) {
      if (best.score <= entryAlpha && best.move != NoMove) publishBest(split, best);
      break;
    }
    const Move move = split.moves[i];
    if (split.firstMove != NoMove && isSameMove(move, split.firstMove)) continue;
    hasSearched = true;
    const int alpha = split.alpha.load(std::memory_order_relaxed);
    const MoveResult result =
        searchMove(worker, node, undo, move, i >= split.lateIndex, split.threats[i], alpha, true);
    // The result of a search that was killed is worth nothing.
    if (result.kind == MoveResult::Stopped || worker.isUnwinding()) break;
    if (result.score <= best.score) continue;
    best = {result.score, move};
    if (result.kind == MoveResult::Pruned) continue;
    if (result.score >= node.beta) {
      publishCutOff(split, move, result.score);
      killWorkers(worker, split);
      break;
    }
    publishAlpha(worker, split, move, result.score);
  }
  return hasSearched;
}

// Lowers the stop flag and raises it again when there is still a reason. Under the spinLock: a kill
// sets the cut-off of an ancestor first and the flag, under this lock, later, so that it is either
// seen here or comes after.
void checkStop(Worker& worker, const SplitPoint& split) {
  const Guard guard(worker.spinLock);
  worker.stop.exchange(false);  // a full fence: the reasons are read behind it
  // A limit ends the search of all. Were it this worker's alone, the move that it leaves unfinished
  // at a split point above would be missing in the result of those that go on.
  bool mustStop = worker.state.checkLimits(worker) || worker.stopped.load();
  for (const SplitPoint* above = split.parent; above != nullptr && !mustStop;
       above = above->parent) {
    mustStop = above->isCutOff();
  }
  if (mustStop) worker.stop.store(true, std::memory_order_relaxed);
}

// Brings the board from the given ply to the split point's node and takes part there.
void searchFrom(Worker& worker, SplitPoint& split, int fromPly) {
  LineWalk walk(worker.board);
  walk.replayMoves(std::span(split.path).subspan(fromPly, split.node.ply - fromPly));
  account(worker, AdminTime);
  // The search may have ended meanwhile.
  if (worker.state.rootStop.load(std::memory_order_relaxed))
    worker.stop.store(true, std::memory_order_relaxed);
  if (!searchSplitPoint(worker, split)) ++worker.emptyJoins;
  account(worker, WorkTime);
}

// The owner of a split point helps at another one below it.
void helpBelow(Worker& worker, SplitPoint& own, SplitPoint& split) {
  searchFrom(worker, split, own.node.ply);
  {
    const Guard guard(worker.spinLock);
    setSplit(worker, &own);
  }
  split.detach();
  checkStop(worker, own);
  if (own.hasHelpers() && !own.isCutOff() && !worker.isUnwinding()) findWork(worker);
  account(worker, AdminTime);
}

// The owner has found no more moves at its split point: it helps below until its helpers are done.
void helpUntilDone(Worker& worker, SplitPoint& split) {
  account(worker, WorkTime);
  if (split.hasHelpers()) takeBack(worker, split);
  if (split.hasHelpers() && !split.isCutOff() && !worker.isUnwinding() && !worker.isStopped()) {
    findWork(worker);
    Backoff backoff;
    while (split.hasHelpers() && !split.isCutOff() && !worker.isStopped()) {
      if (SplitPoint* const below = joinAssigned(worker)) {
        account(worker, MasterWaitTime);
        helpBelow(worker, split, *below);
        backoff = {};
      } else {
        backoff.pause();
      }
    }
  }
  account(worker, MasterWaitTime);
  stopWaiting(worker, split.parent);
  checkStop(worker, split);
  account(worker, AdminTime);
  Backoff backoff;
  while (split.hasHelpers()) backoff.pause();
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

SplitPoint* trySplit(Worker& worker, const NodeParams& node, int wanted) {
  account(worker, WorkTime);
  ++worker.splitAttempts;
  SplitPoint& split = worker.splitPoints[worker.splitsInUse];
  split.workers.store(0, std::memory_order_relaxed);
  split.stage.store(SplitPublished, std::memory_order_relaxed);
  split.node = node;
  const Board& board = worker.board;
  std::copy_n(board.moves.begin() + (board.ply - node.ply + 1), node.ply, split.path.begin());
  split.parent = splitOf(worker);
  {
    const Guard guard(worker.spinLock);
    if (worker.isUnwinding()) return nullptr;
    setSplit(worker, &split);
  }
  ++worker.splitsInUse;
  handOut(worker, split, wanted);
  if (!split.hasHelpers()) {
    // Nobody came, and nobody can reserve a split point before it is ready.
    const Guard guard(worker.spinLock);
    setSplit(worker, split.parent);
    --worker.splitsInUse;
    return nullptr;
  }
  ++worker.splits;
  return &split;
}

SplitResult searchSplit(Worker& worker, SplitPoint& split, const SplitRequest& request) {
  fillSplitPoint(split, request);
  account(worker, AdminTime);
  searchSplitPoint(worker, split);
  helpUntilDone(worker, split);
  --worker.splitsInUse;
  return {split.bestScore.load(std::memory_order_relaxed), split.bestMove, split.pv.data()};
}

void runSlaveLoop(Worker& worker) {
  findWork(worker);
  for (;;) {
    account(worker, AdminTime);
    SplitPoint* split = nullptr;
    Backoff backoff;
    while (!worker.isStopped() && (split = joinAssigned(worker)) == nullptr) backoff.pause();
    account(worker, WorkWaitTime);
    if (split == nullptr) {
      stopWaiting(worker, nullptr);
      return;
    }
    searchFrom(worker, *split, 0);
    {
      const Guard guard(worker.spinLock);
      setSplit(worker, nullptr);
      worker.stop.exchange(false);  // it may have been raised for the split point just left
    }
    split->detach();
    findWork(worker);
  }
}

}  // namespace quill
