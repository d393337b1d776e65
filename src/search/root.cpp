#include "search/root.h"

#include <algorithm>
#include <cassert>
#include <cstdio>
#include <cstdlib>

#include "search/line_walk.h"
#include "search/node.h"
#include "search/report.h"
#include "search/search.h"
#include "search/search_state.h"
#include "time/time_control.h"

namespace quill {

namespace {

// Depth of table entries of the principal variation that no search has reached.
constexpr int UnsearchedDepth = -64;

const char* reasonText(StopReason reason) {
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

void storeRoot(SearchState& state, Move move, int bound, int depth, int score, int eval) {
  state.tt.storeScore(state.master(), bound, depth, 0, score, move, eval);
}

// Searches the move at the slot, which has been made: with the open window if it may become a line
// of its own, else with a zero window first.
int searchRootMove(SearchState& state, int slot, int depth, int alpha, int beta) {
  Worker& master = state.master();
  TimeControl& timeControl = state.timeControl;
  if (slot < state.activeMultiPv) {
    return -search(master, 1, depth - 1, -beta, -alpha, PvNode);
  }
  int score = -search(master, 1, depth - 1, -alpha - 1, -alpha, CutNode | NullOk);
  if (score <= alpha || checkRootLimits(state)) return score;

  timeControl.newBestCandidate();
  const Move move = state.rootMoves.at(slot).move;
  char text[32];
  std::snprintf(text, sizeof text, "++%i/%i ", slot + 1, static_cast<int>(state.rootMoves.count));
  printFailLine(state, score, text, move);
  score = -search(master, 1, depth - 1, -beta, -alpha, PvNode);
  if (!checkRootLimits(state) && score <= alpha) printFailLine(state, score, "--", move);
  timeControl.candidateResolved();
  return score;
}

// The alpha that the next root move has to beat.
int raiseAlpha(const SearchState& state, int depth, int alpha, int score) {
  if (state.activeMultiPv <= 1) return score;
  const RootMoveList& moves = state.rootMoves;
  const RootMove& last = moves.at(lineCount(moves, state.activeMultiPv) - 1);
  if (last.depth == depth) alpha = last.score;
  if (state.activeMultiPvMargin != 0) {
    alpha = std::max(alpha, bestScore(moves) - state.activeMultiPvMargin);
  }
  return alpha;
}

// Takes a root move's score to the list, the clock and the listener. True when it failed high.
bool takeRootScore(SearchState& state, int slot, int depth, int& alpha, int beta, int score,
                   int eval) {
  RootMoveList& moves = state.rootMoves;
  const std::uint32_t index = moves.order[slot];
  const Move move = moves.records[index].move;
  const bool isLine = slot < state.activeMultiPv;
  if (isLine) state.timeControl.firstMoveSearched(score);
  if (score <= alpha) {
    if (!isLine) return false;
    state.timeControl.firstMoveFailedLow();
    printFailLine(state, score, "--", move);
    if (state.listener != nullptr) state.listener->reportPv(state.iterationDepth, score, move);
    return false;
  }
  joinLine(moves.lines[index].data(), move, state.master().pv[1].data());
  printPvLine(state, placeRootMove(moves, state.activeMultiPv, slot));
  storeRoot(state, move, LowerBound, depth, score, eval);
  if (score >= beta) return true;
  alpha = raiseAlpha(state, depth, alpha, score);
  return false;
}

void rootSearch(SearchState& state, int depth, int alpha, int beta) {
  Worker& master = state.master();
  RootMoveList& moves = state.rootMoves;
  const UndoInfo undo = master.board;
  const int eval = evaluate(master.evaluator);
  const int entryAlpha = alpha;
  for (int slot = 0; slot < static_cast<int>(moves.count); ++slot) {
    RootMove& record = moves.at(slot);
    if (checkRootLimits(state)) return;
    if (record.bound == Exact && record.depth >= depth) continue;
    const std::uint64_t nodesBefore = master.stats.searched();
    makeForSearch(master, record.move);
    if (state.listener != nullptr) {
      state.listener->reportCurrentMove(state.iterationDepth, slot, record.move);
    }
    const int score = searchRootMove(state, slot, depth, alpha, beta);
    unmakeMove(master.board, record.move, undo);
    if (checkRootLimits(state)) return;
    record.depth = static_cast<std::uint8_t>(depth);
    record.score = static_cast<std::int16_t>(score);
    record.nodes = master.stats.searched() - nodesBefore;
    record.bound = score >= beta ? FailHigh : score > alpha ? Exact : FailLow;
    if (takeRootScore(state, slot, depth, alpha, beta, score, eval)) return;
  }
  const RootMove& best = moves.at(0);
  storeRoot(state, best.move, entryAlpha >= best.score ? UpperBound : ExactBound, depth, best.score,
            eval);
}

// Searches the iteration, widening the window on the side that failed until the scores lie inside.
void aspirationSearch(SearchState& state, int depth) {
  if (depth < AspirationDepth) {
    rootSearch(state, depth, -MateScore, MateScore);
    return;
  }
  const RootMoveList& moves = state.rootMoves;
  const int lowStart = lowestPvScore(moves, state.activeMultiPv);
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
    rootSearch(state, depth, std::max(alpha, -MateScore), std::min(beta, MateScore));
    if (checkRootLimits(state)) return;
    low = lowestPvScore(moves, state.activeMultiPv);
    best = bestScore(moves);
    // A last line below the reported range needs no exact score.
    const bool outOfRange = state.activeMultiPvMargin != 0 && state.activeMultiPv >= 2 &&
                            low <= best - state.activeMultiPvMargin;
    if (low <= alpha && !outOfRange) continue;
    if (best >= beta) continue;
    return;
  }
}

// Writes the best line into the table, so that the next iteration follows it even where its entries
// have been displaced.
void writeBackLine(SearchState& state) {
  Worker& master = state.master();
  LineWalk walk(master.board);
  int score = bestScore(state.rootMoves);
  for (const Move* line = state.rootMoves.lineAt(0); *line != NoMove; ++line) {
    TtEntry entry;
    int depth = UnsearchedDepth;
    int eval = 0;
    if (state.tt.probe(master, entry)) {
      if (entry.bound == ExactBound) depth = entry.depth;
      eval = entry.eval;
      state.tt.remove(master);
    } else {
      eval = evaluate(master.evaluator);
    }
    state.tt.storeScore(master, ExactBound, depth, walk.size(), score, *line, eval);
    score = -score;
    state.tt.prefetchChild(master.board, *line);
    walk.play(*line);
  }
}

StopReason stopReasonOf(const SearchState& state, int depth, int score) {
  const TimeControl& timeControl = state.timeControl;
  if (MateScore - std::abs(score) <= depth + 1) return StopMate;
  if (score >= MateScore + 1 - 2 * state.request.mateIn) return StopMate;
  if (depth > 1 && state.rootMoves.count == 1 && state.request.moveCount == 0)
    return StopSingleMove;
  if (timeControl.elapsed() > timeControl.phaseTime(NewIterationPhase)) return StopTime;
  const std::uint64_t nodes = timeControl.phaseNodes(NewIterationPhase);
  if (nodes != 0 && nodes < state.master().stats.searched()) return StopNodes;
  if (timeControl.depthLimit() != 0 && depth >= timeControl.depthLimit()) return StopDepth;
  return StopNone;
}

// One iteration. False when the search ends with it.
bool iterate(SearchState& state, int depth, std::uint64_t previousNodes) {
  TimeControl& timeControl = state.timeControl;
  state.iterationDepth = depth;
  timeControl.setIterationDepth(depth);
  aspirationSearch(state, depth);
  writeBackLine(state);
  const int score = bestScore(state.rootMoves);
  if (checkRootLimits(state)) {
    printSearchLine(state, score, "stopped\n");
    return false;
  }
  timeControl.iterationDone(state.rootMoves.bestMove(), score);
  const StopReason reason = stopReasonOf(state, depth, score);
  // Both are sequentially consistent: the reason is stored first, then infinite is read.
  // Uci::ponderhit clears infinite and then reads the reason: one of them sees the other's change.
  state.stopReason.store(reason);
  const bool goesOn = reason == StopNone || timeControl.infinite();
  const float ratio =
      static_cast<float>(state.master().stats.searched()) / static_cast<float>(previousNodes);
  printIteration(state, score, reasonText(reason), ratio,
                 reason != StopNone && goesOn ? "(INF)" : "");
  return goesOn;
}

}  // namespace

bool checkRootLimits(SearchState& state) { return state.checkLimits(state.master()); }

void think(SearchState& state) {
  const RootRequest& request = state.request;
  const int count =
      initRootMoves(state.rootMoves, state.master(),
                    std::span(request.moves).first(static_cast<std::size_t>(request.moveCount)));
  std::uint64_t previousNodes = 1;
  for (int depth = 1; count > 0 && depth <= DeepestIteration; ++depth) {
    if (!iterate(state, depth, previousNodes)) break;
    sortRootTail(state.rootMoves, state.activeMultiPv);
    previousNodes = std::max<std::uint64_t>(1, state.master().stats.searched());
  }
  if (state.listener != nullptr) {
    const RootMove& best = state.rootMoves.at(0);
    state.listener->searchFinished(state.iterationDepth, best.score, best.move);
  }
}

}  // namespace quill
