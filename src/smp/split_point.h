// A node whose remaining moves several threads search together.
//
// The owner publishes the node's moves, hands the split point to idle threads and then takes moves
// from it like any helper, each thread taking the next move under an atomic counter. Helpers bring
// their own boards to the node by replaying the path. A cut-off kills the search of all who work at
// the split point or below it. Once no move is left for the owner it helps below its own split
// point until its helpers are done.
//
// Threads: lock order: the pool's lock, then a worker's spinLock; a split point's lock is taken
// alone. The plain fields are written by the owner before stage becomes 2 (release) and read by
// helpers that have seen it (acquire); path and parent already before the split point is published
// under spinLocks. alpha, bestScore, bestMove and pv change under lock; alpha and bestScore are
// also read without it, a little stale at worst. The record is reused only when workers has fallen
// to 0 (acquire), that is, when everyone's last use lies behind.
#pragma once

#include <array>
#include <atomic>

#include "board/move.h"
#include "platform/lock.h"
#include "search/root_moves.h"
#include "search/search.h"

namespace quill {

inline constexpr int MaxSplitPoints = 16;  // in use by one thread

enum SplitStage : int {
  SplitPublished = 0,
  SplitHasMoves = 1,
  SplitReady = 2,     // every field is set; helpers search
  SplitFinished = 3,  // by a cut-off
};

struct SplitPoint {
  platform::SpinLock lock;
  NodeParams node;  // ply, depth (also the priority when idle threads choose), bounds, ...
  std::atomic<int> alpha{0};  // raised by the workers
  std::atomic<int> bestScore{0};
  Move bestMove = NoMove;
  Move firstMove = NoMove;       // searched before the list was generated; skipped, mark apart
  int lateIndex = 0;             // from here on moves count as late
  SplitPoint* parent = nullptr;  // what the owner was working under
  std::atomic<int> stage{SplitPublished};
  std::atomic<int> workers{0};    // helpers attached or reserved, the owner not counted
  std::atomic<int> nextIndex{0};  // next entry of moves to hand out
  std::atomic<int> moveCount{0};  // set to 0 by a cut-off
  std::array<Move, MaxMoves> moves;
  std::array<int, MaxMoves> threats;    // flags of the moves by flagQuietThreats
  std::array<Move, MaxSearchPly> path;  // from the search root to the node, null moves as 0
  std::array<Move, MaxSearchPly> pv;    // bestMove and its continuation, ended by 0

  bool isCutOff() const { return bestScore.load(std::memory_order_relaxed) >= node.beta; }
};

// A node at the point of its move loop where it may be split.
struct SplitRequest {
  const NodeParams& node;
  int alpha;
  int best;
  Move bestMove;
  Move excluded;
  const Move* moves;   // the remaining moves, the one about to be searched first
  const int* threats;  // their flags
  int moveCount;
  int lateIndex;  // among the remaining
};

struct SplitResult {
  bool isSplit = false;  // the remaining moves are searched
  int best = 0;
  Move bestMove = NoMove;
  const Move* pv = nullptr;  // of the best move; valid until the worker splits again
};

// Whether a split is worth trying now: a thread is idle and this one may split. Cheap.
bool canSplit(const Worker& worker);

// Shares the remaining moves of the node with idle threads and returns when all are searched.
// Nothing is done when no thread can be had. After a split the worker's stop flag says whether the
// result counts.
SplitResult trySplit(Worker& worker, const SplitRequest& request);

// The work loop of a slave thread, from its wake until the search is stopped.
void runSlaveLoop(Worker& worker);

}  // namespace quill
