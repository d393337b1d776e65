// The record of the search that runs: what its threads share, what was asked of it, how far it has
// come and whether it has to end. The pool owns the only one; each search begins with reset.
//
// Threads: multiPv and multiPvMargin belong to the input thread; reset is called there, while all
// threads are idle. While a search runs, rootMoves and iterationDepth belong to the master; others
// may read them once the pool is idle (waitIdle orders their reads after its writes). The atomics
// tell how they are shared.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/lock.h"
#include "search/listener.h"
#include "search/root_moves.h"
#include "search/worker.h"

namespace quill {

class TimeControl;

// Why the iteration loop has decided to end, in the order of the tests.
enum StopReason : int {
  StopNone = 0,
  StopMate = 1,        // a mate within the horizon
  StopSingleMove = 2,  // nothing to choose
  StopTime = 4,
  StopNodes = 5,
  StopDepth = 6,
};

// What a search is asked for beside the best move.
struct RootRequest {
  std::array<Move, MaxMoves> moves;  // legal ones, each once: no other is searched
  int moveCount = 0;                 // 0 = all
  int mateIn = 0;                    // moves; a mate in no more of them ends the search, 0 = none
  int lines = 0;                     // to follow, in place of the options: 0 = as these say
  int margin = 0;                    // with lines: centipawns, as the option means it
  bool isAlone = false;              // the master searches without help, so that it is reproducible
};

// How far below the best line further lines are followed, in centipawns, unless an option says.
inline constexpr int DefaultMultiPvMargin = 100;

struct SearchState {
  SearchState(Tt& ttRef, TimeControl& timeControlRef);

  // Forgets the last search, in every worker too, and takes over the options for the next one. It
  // will report to the listener (none: to nobody) and, unless it is quiet, print console lines.
  void reset(SearchListener* newListener, bool isQuiet, const RootRequest& newRequest);

  // Worker 0, which runs the root search.
  Worker& master() { return *workers[0]; }
  const Worker& master() const { return *workers[0]; }

  // The one place that tests time and nodes: ends the search of all threads when one of them is
  // spent, the nodes being those of the worker. True when the search has to end, for this reason or
  // another. Any thread.
  bool checkLimits(const Worker& worker);
  // Every thread unwinds. Any thread.
  void endSearch();

  // Sums over the workers; those of a running search may be a little old.
  std::uint64_t searchedNodes() const;
  // Table entries newly filled in this search.
  std::uint64_t ttFilled() const;

  Tt& tt;
  TimeControl& timeControl;
  // The master, and the other workers that have a thread.
  std::span<const std::unique_ptr<Worker>> workers;

  // Options, and what the running search took over of them.
  int multiPv = 1;                           // lines wanted; 0 counts as 1
  int multiPvMargin = DefaultMultiPvMargin;  // centipawns, 0 = none
  int activeMultiPv = 1;
  int activeMultiPvMargin = DefaultMultiPvMargin;
  SearchListener* listener = nullptr;  // none for a console search
  bool quiet = false;                  // no console lines
  RootRequest request;

  // How far the search has come.
  RootMoveList rootMoves;
  int iterationDepth = 0;  // 0 before the first iteration

  // Ends the iteration loop; set before the workers' stop flags. Sequentially consistent where it
  // is set and where a worker has just lowered its stop flag, so that one of the two is noticed.
  alignas(platform::CacheLine) std::atomic<bool> rootStop{false};
  // Sequentially consistent, against TimeControl::infinite: see Uci::ponderhit.
  std::atomic<StopReason> stopReason{StopNone};

  // Every move loop reads these, and nothing that changes more often lies on their line.
  // Threads that wait for a split point; below 0 while one thread hands out work. Sequentially
  // consistent where it changes, relaxed where the move loop asks whether a split is worth trying.
  alignas(platform::CacheLine) std::atomic<int> idleCount{0};
  // Those of them that own a split point and may only help below it. Changes with idleCount, under
  // poolLock or the owner's spinLock; relaxed, since it only tells whether a split is worth trying.
  std::atomic<int> waitingOwners{0};
  // Who is idle, and who may be killed; taken before a worker's lock.
  alignas(platform::CacheLine) platform::SpinLock poolLock;
};

}  // namespace quill
