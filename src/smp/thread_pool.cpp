#include "smp/thread_pool.h"

#include <algorithm>
#include <cassert>

#include "eval/evaluator.h"
#include "search/report.h"
#include "search/root.h"
#include "search/tt.h"
#include "shell/log.h"
#include "time/time_control.h"

namespace quill {

namespace {

constexpr std::uint32_t PawnHashEntries = 131072;  // of a running thread: 4 MB
// A search recurses up to 128 plies of two to three kilobytes each, with nested split points on
// top; sanitizers make frames several times larger.
constexpr std::size_t StackBytes = std::size_t{16} << 20;

}  // namespace

ThreadPool::ThreadPool(Tt& ttRef, TimeControl& timeControlRef, const EvalTables& evalTablesRef)
    : tt(ttRef), timeControl(timeControlRef), evalTables(evalTablesRef) {
  rootMoves.clear();
  for (int i = 0; i < MaxThreads; ++i) workers[i] = std::make_unique<Worker>(*this, i);
}

ThreadPool::~ThreadPool() {
  for (int i = 0; i < threadCount_; ++i) stopThread(*workers[i]);
}

void ThreadPool::setThreadCount(int n) {
  waitIdle();
  n = std::clamp(n, 1, MaxThreads);
  while (threadCount_ < n) {
    Worker& worker = *workers[threadCount_];
    resizePawnHash(worker.evaluator.pawnHash, PawnHashEntries);
    startThread(worker);
    if (!worker.thread.isRunning()) {
      resizePawnHash(worker.evaluator.pawnHash, 1);
      return;
    }
    worker.idleEvent.wait();
    ++threadCount_;
  }
  while (threadCount_ > n) {
    Worker& worker = *workers[--threadCount_];
    stopThread(worker);
    resizePawnHash(worker.evaluator.pawnHash, 1);
  }
}

void ThreadPool::startThread(Worker& worker) {
  worker.quit.store(false, std::memory_order_relaxed);
  worker.wakeEvent.reset();
  worker.idleEvent.reset();
  worker.thread.start(threadMain, &worker, StackBytes);
}

void ThreadPool::stopThread(Worker& worker) {
  worker.quit.store(true, std::memory_order_relaxed);  // the wake orders it
  stopWorker(worker);
  wakeWorker(worker);
  worker.thread.join();
}

void ThreadPool::stopWorker(Worker& worker) {
  // Sequentially consistent, the lasting reason first: a worker that clears its stop flag and then
  // looks for reasons either sees this one or has its flag set again behind it.
  worker.stopped.store(true);
  worker.stop.store(true);
}

void ThreadPool::wakeWorker(Worker& worker) {
  worker.currentSplit.store(nullptr, std::memory_order_relaxed);
  worker.available.store(false, std::memory_order_relaxed);
  worker.stopped.store(false, std::memory_order_relaxed);
  worker.stop.store(false, std::memory_order_relaxed);
  worker.idleEvent.reset();
  worker.wakeEvent.set();
}

void ThreadPool::startSearch() {
  waitIdle();
  stopRequested.store(false, std::memory_order_relaxed);
  rootStop.store(false, std::memory_order_relaxed);
  stopReason.store(StopNone, std::memory_order_relaxed);
  prepareSearch(*this);
  for (int i = 0; i < std::max(threadCount_, 1); ++i) {
    Worker& worker = *workers[i];
    // Here, while all are idle: the sums over the workers are right from the start.
    worker.stats.reset();
    worker.killers = {};
    if (i > 0) worker.board.copyFrom(board());
  }
  wakeWorker(master());
}

void ThreadPool::stopAll() {
  stopRequested.store(true, std::memory_order_relaxed);
  rootStop.store(true);
  for (int i = 0; i < threadCount_; ++i) stopWorker(*workers[i]);
  waitIdle();
}

void ThreadPool::endSearch() {
  rootStop.store(true);  // sequentially consistent like stopWorker
  for (int i = 0; i < std::max(threadCount_, 1); ++i) workers[i]->stop.store(true);
}

void ThreadPool::waitIdle() {
  // The master first: it is idle only when it has seen the slaves go idle, which it alone wakes.
  for (int i = 0; i < threadCount_; ++i) workers[i]->idleEvent.wait();
}

bool ThreadPool::isSearching() { return threadCount_ > 0 && !workers[0]->idleEvent.isSet(); }

std::uint64_t ThreadPool::searchedNodes() const {
  std::uint64_t sum = 0;
  for (int i = 0; i < std::max(threadCount_, 1); ++i) sum += workers[i]->stats.searched();
  return sum;
}

std::uint64_t ThreadPool::ttFilled() const {
  std::uint64_t sum = 0;
  for (int i = 0; i < std::max(threadCount_, 1); ++i) {
    const SearchStats& stats = workers[i]->stats;
    // Read in this order, since the counters of a running search go on: new ones are counted first.
    const std::uint64_t overwrites = stats.ttOverwrites;
    sum += stats.ttNew - overwrites;
  }
  return sum;
}

void ThreadPool::clearEvaluators() {
  for (const auto& worker : workers) clearEvaluator(worker->evaluator);
}

void ThreadPool::threadMain(void* argument) {
  Worker& worker = *static_cast<Worker*>(argument);
  for (;;) {
    account(worker, IdleTime);
    worker.wakeEvent.reset();
    worker.idleEvent.set();
    worker.wakeEvent.wait();
    if (worker.quit.load(std::memory_order_relaxed)) break;
    worker.splitsInUse = 0;
    worker.splits = 0;
    worker.joins = 0;
    worker.kills.store(0, std::memory_order_relaxed);
    worker.timeSpent = {};
    account(worker, IdleTime);
    if (worker.index == 0) {
      worker.pool.runMaster();
    } else {
      runSlaveLoop(worker);
    }
  }
  worker.idleEvent.set();
}

void ThreadPool::runMaster() {
  idleCount.store(0);
  for (int i = 1; i < threadCount_; ++i) wakeWorker(*workers[i]);
  think(*this);
  for (int i = 1; i < threadCount_; ++i) stopWorker(*workers[i]);
  // The counters of the others are read when they are idle.
  for (int i = 1; i < threadCount_; ++i) workers[i]->idleEvent.wait();
  account(master(), WorkTime);
  assertSettled();
  printSearchStatistics();
}

void ThreadPool::printSearchStatistics() const {
  SearchStats sum;
  for (int i = 0; i < threadCount_; ++i) sum.add(workers[i]->stats);
  printStatistics(sum, timeControl.elapsed() / 1000.0, tt.entries());
  if (threadCount_ == 1) return;
  for (int i = 0; i < threadCount_; ++i) printThreadStatistics(*workers[i]);
}

// At the end of a search nothing of the parallel search is left over.
void ThreadPool::assertSettled() {
  assert(idleCount.load() == 0);
  assert(!poolLock.isHeld());
  for (int i = 0; i < threadCount_; ++i) {
    [[maybe_unused]] const Worker& worker = *workers[i];
    assert(worker.splitsInUse == 0 && !worker.spinLock.isHeld());
    assert(std::all_of(
        worker.splitPoints.begin(), worker.splitPoints.end(),
        [](const SplitPoint& split) { return split.workers.load() == 0 && !split.lock.isHeld(); }));
  }
}

}  // namespace quill
