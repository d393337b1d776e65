// The record of a node whose remaining moves several threads search together.
//
// The owner hands the split point to idle threads, fills in the node's moves, and then takes moves
// from it like any helper; an atomic counter gives each thread the next one. smp/split.h has the
// search at it, smp/work_sharing.h who works where.
//
// Threads: lock order: the pool's lock, then a worker's spinLock; a split point's lock is taken
// alone. The plain fields are written by the owner before stage becomes SplitReady (release) and
// read by helpers that have seen it (acquire); path and parent already before the split point is
// published under spinLocks. alpha, bestScore, bestMove and pv change under lock; alpha and
// bestScore are also read without it, a little stale at worst. The record is reused only when
// workers has fallen to 0 (acquire), that is, when everyone's last use lies behind.
#pragma once

#include <array>
#include <atomic>

#include "board/move.h"
#include "platform/lock.h"
#include "search/node_params.h"
#include "search/params.h"

namespace quill {

inline constexpr int MaxSplitPoints = 16;  // in use by one thread

// Helpers wait for SplitReady. Nothing tells the other stages apart; they explain a record to a
// person who looks at it.
enum SplitStage : int {
  SplitPublished = 0,
  SplitHasMoves = 1,
  SplitReady = 2,     // every field is set; helpers search
  SplitFinished = 3,  // by a cut-off
};

struct SplitPoint {
  // For all to read, at every move of the node.
  NodeParams node;          // ply, depth (also the priority when idle threads choose), bounds, ...
  Move firstMove = NoMove;  // searched before the list was made; skipped, whatever its mark
  int lateIndex = 0;        // from here on moves count as late
  SplitPoint* parent = nullptr;  // what the owner was working under

  // The result so far, which changes with a better move.
  alignas(platform::CacheLine) platform::SpinLock lock;
  std::atomic<int> alpha{0};  // raised by the workers
  std::atomic<int> bestScore{0};
  Move bestMove = NoMove;

  // Changes with every move.
  alignas(platform::CacheLine) std::atomic<int> nextIndex{0};  // next entry of moves to hand out
  std::atomic<int> moveCount{0};                               // set to 0 by a cut-off

  // Changes as helpers come and go.
  alignas(platform::CacheLine) std::atomic<int> stage{SplitPublished};
  std::atomic<int> workers{0};  // helpers attached or reserved, the owner not counted
  // The owner waits for its helpers and is available to those who split below. A hint.
  std::atomic<bool> ownerWaits{false};

  alignas(platform::CacheLine) std::array<Move, MaxMoves> moves;
  std::array<int, MaxMoves> threats;    // flags of the moves by flagQuietThreats
  std::array<Move, MaxSearchPly> path;  // from the search root to the node, null moves as 0
  std::array<Move, MaxSearchPly> pv;    // bestMove and its continuation, ended by 0

  bool isCutOff() const { return bestScore.load(std::memory_order_relaxed) >= node.beta; }
  // Whether somebody who comes now would have something to do. Requires: stage is SplitReady or
  // later, read with acquire.
  bool hasMovesLeft() const {
    return nextIndex.load(std::memory_order_relaxed) < moveCount.load(std::memory_order_relaxed) &&
           !isCutOff();
  }
  // Acquire: everything that the helpers did at the split point lies before the sight of 0.
  bool hasHelpers() const { return workers.load(std::memory_order_acquire) > 0; }
  // A helper leaves, or a reservation is given back. Release: see hasHelpers.
  void detach() { workers.fetch_sub(1, std::memory_order_acq_rel); }
};

}  // namespace quill
