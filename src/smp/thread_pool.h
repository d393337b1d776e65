// The pool of search threads and the record of the search that they run.
//
// Worker 0, the master, runs the iterative deepening; workers 1 and up, the slaves, wait for split
// points. The thread that reads commands never searches: startSearch returns at once.
//
// Threads: the operations are called by the input thread only. rootStop, stopReason and
// stopRequested are relaxed atomics; the root move list belongs to the master while a search runs
// and may be read by others when the pool is idle (waitIdle orders their reads behind the master's
// writes).
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>

#include "search/listener.h"
#include "search/root_moves.h"
#include "search/worker.h"

namespace quill {

struct EvalTables;

inline constexpr int MaxThreads = 16;

// Why the iteration loop has decided to end, in the order of the tests.
enum StopReason : int {
  StopNone = 0,
  StopMate = 1,        // a mate within the horizon
  StopSingleMove = 2,  // nothing to choose
  StopTime = 4,
  StopNodes = 5,
  StopDepth = 6,
};

struct ThreadPool {
  ThreadPool(Tt& ttRef, TimeControl& timeControlRef, const EvalTables& evalTablesRef);
  // Requires: no search runs. Ends all threads.
  ~ThreadPool();

  // Runs n threads, clamped to 1..16. A thread that can't be created leaves the pool with those it
  // has. Blocks until the threads are ready or ended. Requires: no search runs.
  void setThreadCount(int n);
  int threadCount() const { return threadCount_; }

  // Starts a search of the master's board with the time control as configured. Waits for an earlier
  // search to end, then returns at once; a stop request made right after it is never lost.
  void startSearch();
  // Asks all threads to stop and waits until they are idle.
  void stopAll();
  // Blocks until every running thread is idle.
  void waitIdle();
  // True from startSearch until the master has gone idle again.
  bool isSearching();

  Worker& master() { return *workers[0]; }
  // The game position, that of the master.
  Board& board() { return workers[0]->board; }

  // A limit is reached: every thread unwinds. Any thread.
  void endSearch();

  // Sums over all running threads; values of a running search may be a little old.
  std::uint64_t searchedNodes() const;
  // Table entries newly filled in this search.
  std::uint64_t ttFilled() const;

  // Empties the evaluation cache and pawn hash of every worker. Requires: no search runs.
  void clearEvaluators();

  // The search's record, owned by the root search.
  SearchListener* listener = nullptr;  // none for a console search
  RootMoveList rootMoves;
  std::atomic<bool> rootStop{false};  // ends the iteration loop
  bool quiet = false;                 // no console lines
  std::atomic<int> stopReason{StopNone};
  int iterationDepth = 0;
  // Options; what the running search uses was taken over at its start.
  int multiPv = 1;
  int multiPvMargin = 100;  // centipawns, 0 = none
  int activeMultiPv = 1;
  int activeMultiPvMargin = 100;

  Tt& tt;
  TimeControl& timeControl;
  const EvalTables& evalTables;
  std::array<std::unique_ptr<Worker>, MaxThreads> workers;
  std::atomic<bool> stopRequested{false};
  // Threads that wait for a split point; below 0 while one thread hands them out. Sequentially
  // consistent where it is changed, relaxed where the move loop looks whether a split is worth
  // trying.
  std::atomic<int> idleCount{0};
  platform::SpinLock poolLock;  // taken before any worker's spinLock

 private:
  void startThread(Worker& worker);
  void stopThread(Worker& worker);
  void stopWorker(Worker& worker);
  void wakeWorker(Worker& worker);
  static void threadMain(void* worker);
  void runMaster();
  void printSearchStatistics() const;
  void assertSettled();

  int threadCount_ = 0;
};

}  // namespace quill
