// The pool of search threads, which owns the record of the search that they run.
//
// Worker 0, the master, runs the iterative deepening; workers 1 and up, the slaves, wait for split
// points. The thread that reads commands never searches: startSearch returns at once.
//
// Threads: the operations are called by the input thread only.
#pragma once

#include <array>
#include <atomic>
#include <memory>

#include "search/search_state.h"

namespace quill {

inline constexpr int MaxThreads = 16;

struct ThreadPool {
  ThreadPool(Tt& tt, TimeControl& timeControl, const EvalTables& evalTables);
  // Requires: no search runs. Ends all threads.
  ~ThreadPool();

  // Runs n threads, clamped to 1..16. A thread that can't be created leaves the pool with those it
  // has. Blocks until the threads are ready or ended. Requires: no search runs.
  void setThreadCount(int n);
  int threadCount() const { return threadCount_; }

  // Starts a search of the master's board with the time control as configured; it reports to the
  // listener (none: to nobody) and, unless quiet, prints console lines. By default it looks for the
  // best of all moves. Waits for an earlier search
  // to end, starts this one and returns; a stop request made right after it is never lost. Does
  // nothing in a pool without threads.
  void startSearch(SearchListener* listener, bool quiet, const RootRequest& request = {});
  // Asks all threads to stop and waits until they are idle.
  void stopAll();
  // Blocks until every running thread is idle.
  void waitIdle();
  // True from startSearch until the master has gone idle again.
  bool isSearching() { return !workers[0]->idleEvent.isSet(); }

  // The game position, that of the master.
  Board& board() { return workers[0]->board; }

  // Empties the evaluation cache and pawn hash of every worker. Requires: no search runs.
  void clearEvaluators();

  SearchState state;
  std::array<std::unique_ptr<Worker>, MaxThreads> workers;
  // Whether the last search was asked to stop. A record only: rootStop and the workers' flags are
  // what ends a search.
  std::atomic<bool> stopRequested{false};

 private:
  // Shows the search which workers have a thread.
  void shareWorkers();

  int threadCount_ = 0;
};

}  // namespace quill
