#include "smp/thread_pool.h"

#include <algorithm>
#include <cassert>

#include "eval/evaluator.h"
#include "search/report.h"
#include "search/root.h"
#include "search/tt.h"
#include "smp/split.h"
#include "time/time_control.h"

namespace quill {

namespace {

constexpr std::uint32_t PawnHashEntries = 131072;  // of a running thread: 4 MB
// A search recurses up to 128 plies of two to three kilobytes each, with nested split points on
// top; sanitizers make frames several times larger.
constexpr std::size_t StackBytes = std::size_t{16} << 20;

void printSearchStatistics(const SearchState& state) {
  SearchStats sum;
  for (const auto& worker : state.workers) sum.add(worker->stats);
  printStatistics(sum, state.timeControl.elapsed() / 1000.0, state.tt.entries());
  if (state.workers.size() == 1) return;
  for (const auto& worker : state.workers) printThreadStatistics(*worker);
}

// At the end of a search nothing of the parallel search is left over.
void assertSettled([[maybe_unused]] SearchState& state) {
  assert(state.idleCount.load() == 0 && state.waitingOwners.load() == 0);
  assert(!state.poolLock.isHeld());
  for ([[maybe_unused]] const auto& worker : state.workers) {
    assert(worker->splitsInUse == 0 && !worker->spinLock.isHeld());
    assert(std::all_of(
        worker->splitPoints.begin(), worker->splitPoints.end(),
        [](const SplitPoint& split) { return split.workers.load() == 0 && !split.lock.isHeld(); }));
  }
}

// The master's part of a search: the whole of it, with the slaves at its disposal unless it is to
// do without.
void runMaster(SearchState& state) {
  const auto slaves = state.workers.subspan(state.request.isAlone ? state.workers.size() : 1);
  for (const auto& slave : slaves) wakeWorker(*slave);
  think(state);
  for (const auto& slave : slaves) stopWorker(*slave);
  // The counters of the others are read when they are idle.
  for (const auto& slave : slaves) slave->idleEvent.wait();
  account(state.master(), WorkTime);
  assertSettled(state);
  printSearchStatistics(state);
}

// A thread's whole life: idle until it is woken, one part of a search, and again.
void threadMain(void* argument) {
  Worker& worker = *static_cast<Worker*>(argument);
  for (;;) {
    worker.wakeEvent.reset();
    worker.idleEvent.set();
    worker.wakeEvent.wait();
    if (worker.quit.load(std::memory_order_relaxed)) break;
    account(worker, IdleTime);
    if (worker.index == 0) {
      runMaster(worker.state);
    } else {
      runSlaveLoop(worker);
    }
  }
  worker.idleEvent.set();
}

// On failure: false, and the worker stays without a thread.
bool startThread(Worker& worker) {
  worker.quit.store(false, std::memory_order_relaxed);
  worker.wakeEvent.reset();
  worker.idleEvent.reset();
  if (worker.thread.start(threadMain, &worker, StackBytes)) {
    worker.idleEvent.wait();
    return true;
  }
  worker.idleEvent.set();
  return false;
}

// Requires: the worker is idle.
void stopThread(Worker& worker) {
  worker.quit.store(true, std::memory_order_relaxed);  // the wake orders it
  wakeWorker(worker);
  worker.thread.join();
}

}  // namespace

ThreadPool::ThreadPool(Tt& tt, TimeControl& timeControl, const EvalTables& evalTables)
    : state(tt, timeControl) {
  for (int i = 0; i < MaxThreads; ++i) {
    workers[i] = std::make_unique<Worker>(state, tt, evalTables, i);
    workers[i]->idleEvent.set();  // what has no thread is idle
  }
  shareWorkers();
}

ThreadPool::~ThreadPool() {
  for (int i = 0; i < threadCount_; ++i) stopThread(*workers[i]);
}

void ThreadPool::shareWorkers() {
  state.workers = std::span(workers).first(static_cast<std::size_t>(std::max(threadCount_, 1)));
}

void ThreadPool::setThreadCount(int n) {
  waitIdle();
  n = std::clamp(n, 1, MaxThreads);
  for (; threadCount_ < n; ++threadCount_) {
    Worker& worker = *workers[threadCount_];
    resizePawnHash(worker.evaluator.pawnHash, PawnHashEntries);
    if (startThread(worker)) continue;
    resizePawnHash(worker.evaluator.pawnHash, 1);
    break;
  }
  while (threadCount_ > n) {
    Worker& worker = *workers[--threadCount_];
    stopThread(worker);
    resizePawnHash(worker.evaluator.pawnHash, 1);
  }
  shareWorkers();
}

void ThreadPool::startSearch(SearchListener* listener, bool quiet, const RootRequest& request) {
  waitIdle();
  if (threadCount_ == 0) return;  // there is nobody who could search
  stopRequested.store(false, std::memory_order_relaxed);
  state.reset(listener, quiet, request);
  state.timeControl.start();
  state.tt.newSearch();
  for (const auto& slave : state.workers.subspan(1)) slave->board.copyFrom(board());
  wakeWorker(state.master());
}

void ThreadPool::stopAll() {
  stopRequested.store(true, std::memory_order_relaxed);
  state.rootStop.store(true);
  for (const auto& worker : state.workers) stopWorker(*worker);
  waitIdle();
}

void ThreadPool::waitIdle() {
  // The master first: it is idle only when it has seen the slaves go idle, which it alone wakes.
  for (const auto& worker : state.workers) worker->idleEvent.wait();
}

void ThreadPool::clearEvaluators() {
  for (const auto& worker : workers) clearEvaluator(worker->evaluator);
}

}  // namespace quill
