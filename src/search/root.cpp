#include "search/root.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>

#include "board/make_move.h"
#include "eval/evaluator.h"
#include "search/line_walk.h"
#include "search/params.h"
#include "search/report.h"
#include "search/search.h"
#include "search/tt.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill {

namespace {

// Depth of table entries of the principal variation that no search has reached.
constexpr int UnsearchedDepth = -64;

const char* reasonText(int reason) {
  switch (reason) {
    case StopMate:
      return "(optimal)";
    case StopSingleMove:
      return "single move";
    case StopTime:
      return "timeout";
    case StopNodes:
      return "nodeout";
    case StopDepth:
      return "depthout";
    default:
      return "ok";
  }
}

void storeRoot(ThreadPool& pool, Move move, int bound, int depth, int score, int eval) {
  pool.tt.storeScore(pool.master(), bound, depth, 0, score, move, eval);
}

// Searches the move at the slot, which has been made: with the open window when it may become a
// line of its own, else with a zero window first.
int searchRootMove(ThreadPool& pool, int slot, int depth, int alpha, int beta) {
  Worker& master = pool.master();
  TimeControl& timeControl = pool.timeControl;
  if (slot == 0 || slot < pool.activeMultiPv) {
    return -search(master, 1, depth - 1, -beta, -alpha, PvNode);
  }
  int score = -search(master, 1, depth - 1, -alpha - 1, -alpha, CutNode | NullOk);
  if (score <= alpha || checkRootLimits(pool)) return score;

  timeControl.newBestCandidate();
  const Move move = pool.rootMoves.at(slot).move;
  char text[32];
  std::snprintf(text, sizeof text, "++%i/%i ", slot + 1, static_cast<int>(pool.rootMoves.count));
  printFailLine(pool, score, text, move);
  score = -search(master, 1, depth - 1, -beta, -alpha, PvNode);
  if (!checkRootLimits(pool) && score <= alpha) printFailLine(pool, score, "--", move);
  timeControl.candidateResolved();
  return score;
}

// Takes the child's line behind the move as the root move's own.
void takeLine(ThreadPool& pool, std::uint32_t index, Move move) {
  auto& line = pool.rootMoves.lines[index];
  const auto& child = pool.master().pv[1];
  line[0] = move;
  int length = 0;
  for (; length < MaxSearchPly - 2 && child[length] != NoMove; ++length)
    line[length + 1] = child[length];
  line[length + 1] = NoMove;
}

// The alpha that the next root move has to beat.
int raiseAlpha(const ThreadPool& pool, int depth, int alpha, int score) {
  if (pool.activeMultiPv <= 1) return score;
  const RootMoveList& moves = pool.rootMoves;
  const RootMove& last = moves.at(lineCount(moves, pool.activeMultiPv) - 1);
  if (last.depth == depth) alpha = last.score;
  if (pool.activeMultiPvMargin != 0) {
    alpha = std::max(alpha, bestScore(moves) - pool.activeMultiPvMargin);
  }
  return alpha;
}

// What a root move's score means for the list, the clock and the listener. True when it failed
// high.
bool takeRootScore(ThreadPool& pool, int slot, int depth, int& alpha, int beta, int score,
                   int eval) {
  RootMoveList& moves = pool.rootMoves;
  const std::uint32_t index = moves.order[slot];
  const Move move = moves.records[index].move;
  const bool isLine = slot == 0 || slot < pool.activeMultiPv;
  if (isLine) pool.timeControl.firstMoveSearched(score);
  if (score <= alpha) {
    if (!isLine) return false;
    pool.timeControl.firstMoveFailedLow();
    printFailLine(pool, score, "--", move);
    if (pool.listener != nullptr) pool.listener->reportPv(pool.iterationDepth, score, move);
    return false;
  }
  takeLine(pool, index, move);
  printPvLine(pool, placeRootMove(moves, pool.activeMultiPv, slot));
  storeRoot(pool, move, LowerBound, depth, score, eval);
  if (score >= beta) return true;
  alpha = raiseAlpha(pool, depth, alpha, score);
  return false;
}

void rootSearch(ThreadPool& pool, int depth, int alpha, int beta) {
  Worker& master = pool.master();
  RootMoveList& moves = pool.rootMoves;
  const UndoInfo undo = master.board;
  const int eval = evaluate(master.evaluator);
  const int entryAlpha = alpha;
  for (int slot = 0; slot < static_cast<int>(moves.count); ++slot) {
    RootMove& record = moves.at(slot);
    if (checkRootLimits(pool)) return;
    if (record.bound == Exact && record.depth >= depth) continue;
    const std::uint64_t nodesBefore = master.stats.searched();
    makeMove(master.board, record.move);
    updateAttackInfo(master.board);
    if (pool.listener != nullptr) {
      pool.listener->reportCurrentMove(pool.iterationDepth, slot, record.move);
    }
    const int score = searchRootMove(pool, slot, depth, alpha, beta);
    unmakeMove(master.board, record.move, undo);
    if (checkRootLimits(pool)) return;
    record.depth = static_cast<std::uint8_t>(depth);
    record.score = static_cast<std::int16_t>(score);
    record.nodes = master.stats.searched() - nodesBefore;
    record.bound = score >= beta ? FailHigh : score > alpha ? Exact : FailLow;
    if (takeRootScore(pool, slot, depth, alpha, beta, score, eval)) return;
  }
  const RootMove& best = moves.at(0);
  storeRoot(pool, best.move, entryAlpha >= best.score ? UpperBound : ExactBound, depth, best.score,
            eval);
}

// Searches the iteration, widening the window on the side that failed until the scores lie inside.
void aspirationSearch(ThreadPool& pool, int depth) {
  if (depth < AspirationDepth) {
    rootSearch(pool, depth, -MateScore, MateScore);
    return;
  }
  const RootMoveList& moves = pool.rootMoves;
  const int lowStart = lowestPvScore(moves, pool.activeMultiPv);
  const int bestStart = bestScore(moves);
  int low = lowStart;
  int best = bestStart;
  int alpha = lowStart;
  int beta = bestStart;
  std::size_t lowStep = 0;
  std::size_t highStep = 0;
  for (;;) {
    while (low <= alpha && lowStep < AspirationSteps.size())
      alpha = lowStart - AspirationSteps[lowStep++];
    while (best >= beta && highStep < AspirationSteps.size())
      beta = bestStart + AspirationSteps[highStep++];
    rootSearch(pool, depth, std::max(alpha, -MateScore), std::min(beta, MateScore));
    if (checkRootLimits(pool)) return;
    low = lowestPvScore(moves, pool.activeMultiPv);
    best = bestScore(moves);
    // A last line below the reported range needs no exact score.
    const bool outOfRange = pool.activeMultiPvMargin != 0 && pool.activeMultiPv >= 2 &&
                            low <= best - pool.activeMultiPvMargin;
    if (low <= alpha && !outOfRange) continue;
    if (best >= beta) continue;
    return;
  }
}

// Writes the best line into the table, so that the next iteration follows it though its entries may
// have been displaced.
void writeBackLine(ThreadPool& pool) {
  Worker& master = pool.master();
  LineWalk walk(master.board);
  int score = bestScore(pool.rootMoves);
  for (const Move* line = pool.rootMoves.lineAt(0); *line != NoMove; ++line) {
    TtEntry entry;
    int depth = UnsearchedDepth;
    int eval = 0;
    if (pool.tt.probe(master, entry)) {
      if (entry.bound == ExactBound) depth = entry.depth;
      eval = entry.eval;
      pool.tt.remove(master);
    } else {
      eval = evaluate(master.evaluator);
    }
    pool.tt.storeScore(master, ExactBound, depth, walk.size(), score, *line, eval);
    score = -score;
    walk.play(*line);
  }
}

StopReason stopReasonOf(const ThreadPool& pool, int depth, int score) {
  const TimeControl& timeControl = pool.timeControl;
  constexpr int IterationPhase = 1;  // its budgets decide whether another iteration begins
  if (MateScore - std::abs(score) <= depth + 1) return StopMate;
  if (depth > 1 && pool.rootMoves.count == 1) return StopSingleMove;
  if (timeControl.elapsed() > timeControl.phaseTime(IterationPhase)) return StopTime;
  const std::uint64_t nodes = timeControl.phaseNodes(IterationPhase);
  if (nodes != 0 && nodes < pool.workers[0]->stats.searched()) return StopNodes;
  if (timeControl.depthLimit() != 0 && depth >= timeControl.depthLimit()) return StopDepth;
  return StopNone;
}

// One iteration. False when the search ends with it.
bool iterate(ThreadPool& pool, int depth, std::uint64_t previousNodes) {
  TimeControl& timeControl = pool.timeControl;
  pool.iterationDepth = depth;
  timeControl.setIterationDepth(depth);
  aspirationSearch(pool, depth);
  writeBackLine(pool);
  const int score = bestScore(pool.rootMoves);
  if (checkRootLimits(pool)) {
    printSearchLine(pool, score, "stopped\n");
    return false;
  }
  timeControl.iterationDone(pool.rootMoves.bestMove(), score);
  const StopReason reason = stopReasonOf(pool, depth, score);
  // Release: a "ponderhit" that reads the reason ends this search, no later one.
  pool.stopReason.store(reason, std::memory_order_release);
  const float ratio =
      static_cast<float>(pool.workers[0]->stats.searched()) / static_cast<float>(previousNodes);
  const bool goesOn = reason == StopNone || timeControl.infinite();
  printIteration(pool, score, reasonText(reason), ratio,
                 reason != StopNone && goesOn ? "(INF)" : "");
  return goesOn;
}

}  // namespace

void prepareSearch(ThreadPool& pool) {
  Worker& master = pool.master();
  pool.rootMoves.clear();
  pool.iterationDepth = 0;
  pool.activeMultiPv = std::max(1, pool.multiPv);
  pool.activeMultiPvMargin = pool.multiPvMargin;
  master.stats.reset();
  master.selDepth = 0;
  pool.timeControl.start();
  pool.tt.newSearch();
}

bool checkRootLimits(ThreadPool& pool) {
  const bool limit = pool.timeControl.isNodeLimitReached(pool.workers[0]->stats.searched()) ||
                     pool.timeControl.isTimeUp();
  // Once set it stays: only a new search clears it.
  if (limit) pool.rootStop.store(true, std::memory_order_relaxed);
  return pool.rootStop.load(std::memory_order_relaxed);
}

void think(ThreadPool& pool) {
  const int count = initRootMoves(pool.rootMoves, pool.master());
  std::uint64_t previousNodes = 1;
  for (int depth = 1; count > 0 && depth <= DeepestIteration; ++depth) {
    if (!iterate(pool, depth, previousNodes)) break;
    sortRootTail(pool.rootMoves, pool.activeMultiPv);
    previousNodes = std::max<std::uint64_t>(1, pool.workers[0]->stats.searched());
  }
  if (pool.listener != nullptr) {
    const RootMove& best = pool.rootMoves.at(0);
    pool.listener->searchFinished(pool.iterationDepth, best.score, best.move);
  }
}

}  // namespace quill
