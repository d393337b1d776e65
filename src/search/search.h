// The main search: a fail-soft principal-variation alpha-beta search below the root.
//
// Scores are signed centipawns from the side to move's view. A node is searched in numbered steps,
// most of them a function of their own. The step for one move, searchMove, serves the move loop of
// a node and that of a split point alike.
//
// Threads: a search uses its own Worker, the shared table and the split points, and ends the search
// of all threads when a limit is reached. Once its worker has to unwind, every level returns 0 at
// once and stores nothing; the moves made are taken back on the way up.
#pragma once

#include "board/board.h"
#include "search/node_params.h"

namespace quill {

struct Worker;

// Searches the position of the worker's board to the depth (plies; below 1: quiescence).
// Requires: 1 <= ply, valid attack information.
int search(Worker& worker, int ply, int depth, int alpha, int beta, unsigned flags);

struct MoveResult {
  enum Kind { Searched, Pruned, Stopped } kind;
  int score;  // of the move; the futility limit when it was pruned, 0 when stopped
};

// Searches one move of the node: futility pruning, make, extension, reduction, search, unmake.
// threat is the move's flag by flagQuietThreats; late moves may be pruned and reduced. undo is the
// node's own position.
MoveResult searchMove(Worker& worker, const NodeParams& node, const UndoInfo& undo, Move move,
                      bool late, int threat, int alpha, bool hasBestMove);

}  // namespace quill
