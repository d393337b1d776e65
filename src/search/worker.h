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
#include "search/killers.h"
#include "search/root_moves.h"

namespace quill {

class Tt;
class TimeControl;
struct ThreadPool;

// A count that its own thread advances and others may read, perhaps a little late. Relaxed load and
// store cost what a plain integer does.
class Counter {
 public:
  void operator++() { value_.store(value() + 1, std::memory_order_relaxed); }
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
  // What node limits, speed and the protocol call searched nodes.
  std::uint64_t searched() const { return qnodes + pruned + nodes; }
};

struct Worker {
  Worker(ThreadPool& owner, int place);

  Board board;
  Evaluator evaluator;  // evaluates board
  SearchStats stats;
  int selDepth = 0;               // largest ply that the main search reached
  std::atomic<bool> stop{false};  // unwind now; every search level returns 0 while it is set
  KillerTable killers{};          // two quiet moves by ply, without the mark
  // Triangular table: pv[ply] is the best line found from ply, ended by 0.
  std::array<std::array<Move, MaxSearchPly>, MaxSearchPly> pv{};

  ThreadPool& pool;
  Tt& tt;
  TimeControl& timeControl;
  const int index;  // 0 = master
};

}  // namespace quill
