// What the main search and the quiescence search share at every node: the move made for a child,
// the look at the limits, the cut-off by a table entry, and the lines of best play.
//
// A line is an array of moves ended by 0; worker.pv[ply] is the best one found from that ply.
#pragma once

#include <optional>

#include "board/board.h"
#include "board/make_move.h"
#include "eval/evaluate.h"
#include "search/node_params.h"
#include "search/params.h"
#include "search/tt.h"
#include "search/worker.h"

namespace quill {

// What a step of a node's search says: the node is decided with this score, or nothing, and the
// next step has to look.
using Verdict = std::optional<int>;

// Knights, bishops, rooks and queens of the colour.
inline int pieces(const Board& board, Colour colour) {
  return pieceCount(board.side[colour].material);
}

// Makes the move, and asks for the child's table lines before it computes what the child relies on.
inline void makeForSearch(Worker& worker, Move move) {
  makeMove(worker.board, move);
  worker.tt.prefetch(worker.board);
  prefetchEvaluation(worker.evaluator);
  updateAttackInfo(worker.board);
}

// Ends the whole search when a limit is reached. True when the worker has to unwind, its stop flag
// being set then.
bool pollLimits(Worker& worker);

// Whether a table entry decides a node of this depth and window. The score is the entry's, made
// relative to the node.
inline bool cutsOff(const TtEntry& entry, int score, int depth, int alpha, int beta) {
  const int bound = entry.bound & ExactBound;
  if (entry.depth >= depth) {
    return bound == ExactBound || (bound == LowerBound && score >= beta) ||
           (bound == UpperBound && score <= alpha);
  }
  // A forced mate stays one however deep it was found.
  return (score >= DecisiveScore && bound != UpperBound && score >= beta) ||
         (score <= -DecisiveScore && bound != LowerBound && score < alpha);
}

// out = the move and, behind it, the rest. Requires: out holds MaxSearchPly moves;
// rest is ended by 0.
inline void joinLine(Move* out, Move move, const Move* rest) {
  *out++ = move;
  for (int i = 0; i < MaxSearchPly - 2 && rest[i] != NoMove; ++i) *out++ = rest[i];
  *out = NoMove;
}

// pv[ply] = the move alone, or the move and the line found behind it.
inline void setLine(Worker& worker, int ply, Move move) {
  worker.pv[ply][0] = move;
  worker.pv[ply][1] = NoMove;
}
inline void extendLine(Worker& worker, int ply, Move move) {
  joinLine(worker.pv[ply].data(), move, worker.pv[ply + 1].data());
}

}  // namespace quill
