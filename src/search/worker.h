// One search thread's record: its own board, evaluation state and search stacks, and its part in
// the thread pool.
//
// Threads: board, evaluator, killers and pv belong to the worker's own thread while a search runs;
// the input thread copies the game position in while all threads are idle. Flags and counters that
// others read are relaxed atomics.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>

#include "board/board.h"
#include "eval/evaluator.h"
#include "platform/event.h"
#include "platform/lock.h"
#include "platform/thread.h"
#include "search/killers.h"
#include "search/params.h"
#include "smp/split_point.h"

namespace quill {

class Tt;
struct EvalTables;
struct SearchState;

// A count that its own thread advances and others may read, perhaps a little late. Relaxed load and
// store cost what a plain integer does.
class Counter {
 public:
  void operator++() { value_.store(value() + 1, std::memory_order_relaxed); }
  void add(std::uint64_t n) { value_.store(value() + n, std::memory_order_relaxed); }
  void reset() { value_.store(0, std::memory_order_relaxed); }
  std::uint64_t value() const { return value_.load(std::memory_order_relaxed); }
  operator std::uint64_t() const { return value(); }

 private:
  std::atomic<std::uint64_t> value_{0};
};

struct SearchStats {
  Counter qnodes;         // quiescence entries
  Counter pruned;         // moves skipped by futility pruning
  Counter nodes;          // main-search entries with depth >= 1
  Counter frontierNodes;  // main-search calls with depth < 1, handed to quiescence
  Counter ttHits;         // stores that met their own position's entry
  Counter ttNew;          // stores that took another position's place
  Counter ttOverwrites;   // of those, how many displaced an entry of the current generation

  void reset();
  void add(const SearchStats& other);
  // What node limits, speed and the protocol call searched nodes.
  std::uint64_t searched() const { return qnodes + pruned + nodes; }
};

// What a thread's time goes into.
enum Activity : int {
  IdleTime,        // not reported
  WorkWaitTime,    // a slave waiting for work
  MasterWaitTime,  // the owner of a split point helping elsewhere
  SlaveWaitTime,   // the owner waiting for its helpers to finish
  AdminTime,       // setting up and joining split points
  WorkTime,        // searching
  ActivityCount
};

struct Worker {
  Worker(SearchState& sharedState, Tt& table, const EvalTables& evalTables, int place);

  // Forgets the last search, except for the stop flags, which wakeWorker lowers. Input thread,
  // while the worker is idle.
  void reset();

  // This worker has to unwind now (reads stop): a search ends, or just one node's.
  bool isUnwinding() const { return stop.load(std::memory_order_relaxed); }
  // Its whole search has been stopped (reads stopped): there is nothing more to look for.
  bool isStopped() const { return stopped.load(std::memory_order_relaxed); }

  Board board;
  Evaluator evaluator;  // evaluates board
  SearchStats stats;
  int selDepth = 0;       // largest ply that the main search reached
  KillerTable killers{};  // two quiet moves by ply, without the mark
  // Triangular table: pv[ply] is the best line found from ply, ended by 0.
  std::array<std::array<Move, MaxSearchPly>, MaxSearchPly> pv{};

  SearchState& state;  // of the search that all workers share
  Tt& tt;
  const int index;  // 0 = master

  // Its thread. The events order what is done for an idle worker before what it does itself.
  platform::Thread thread;
  platform::Event wakeEvent;
  platform::Event idleEvent;
  std::atomic<bool> quit{false};  // end the thread

  // Read at every node, written when a search or a shared node ends: a line of their own, which
  // neither the counts of this thread nor the locks of the others take away.
  alignas(platform::CacheLine) std::atomic<bool> stop{false};  // unwind now; each level returns 0
  std::atomic<bool> stopped{false};  // the search is being stopped; cleared by the wake

  // Split points. spinLock guards currentSplit, available and isAssigned against threads that hand
  // out work.
  alignas(platform::CacheLine) platform::SpinLock spinLock;
  std::atomic<SplitPoint*> currentSplit{nullptr};  // what it works at, none above all split points
  std::atomic<bool> available{false};              // counted in idleCount
  bool isAssigned = false;        // currentSplit was given to it, and it has not joined yet
  SplitPoint* waitsAt = nullptr;  // its currentSplit while it is available; others read it then
  std::atomic<std::uint32_t> kills{0};  // advanced by the threads that kill
  alignas(platform::CacheLine) int splitsInUse = 0;
  std::array<SplitPoint, MaxSplitPoints> splitPoints;  // a stack, splitsInUse deep

  // Counters of the search for the statistics.
  std::uint32_t splits = 0;
  std::uint32_t joins = 0;
  std::uint32_t splitAttempts = 0;  // nodes that were to be split, whether or not anybody came
  std::uint32_t emptyJoins = 0;     // of the joins, those that found no move left
  std::uint32_t drops = 0;      // assignments that it did not join: no move was left, or taken back
  std::uint32_t poolLocks = 0;  // how often it asked for poolLock
  std::uint32_t lastTick = 0;   // ms
  std::array<std::uint32_t, ActivityCount> timeSpent{};  // ms by Activity
};

// Asks the worker to end its search. Any thread.
void stopWorker(Worker& worker);
// Lets the idle worker's thread begin its part of a search, with its stop flags lowered.
void wakeWorker(Worker& worker);

// Adds the time since the last call to the activity that has just ended. The worker's own thread.
void account(Worker& worker, Activity activity);

}  // namespace quill
