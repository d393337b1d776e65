// The main search: a fail-soft principal-variation alpha-beta search below the root.
//
// Scores are signed centipawns from the side to move's view. A node is searched in numbered steps,
// each a function of its own; the step that searches one move, searchMove, serves the move loop of
// a node and that of a split point alike.
//
// Threads: a search touches its own Worker alone, but for the shared transposition table and the
// split points. Once a worker's stop flag is set every level returns 0 at once, stores nothing and
// leaves the unmaking of moves to those above it.
#pragma once

#include "board/board.h"

namespace quill {

struct Worker;

// What kind of node a call searches; a set of bits.
enum NodeFlags : unsigned {
  PvNode = 1,    // principal variation, open window: no table cut-offs, no static pruning
  AllNode = 2,   // zero window, expected to fail low
  CutNode = 4,   // zero window, expected to fail high: the null move is tried here
  NullOk = 8,    // static pruning and null move allowed
  Reduced = 32,  // a late move searched at reduced depth
  InQuiescence = 256,
};

inline constexpr unsigned ZeroWindowNodes = AllNode | CutNode;

// The kind of node that the child of a zero-window node is: the opposite one.
constexpr unsigned oppositeNode(unsigned flags) { return (~flags & ZeroWindowNodes) | NullOk; }

// Searches the position of the worker's board to the depth (plies; below 1: quiescence).
// Requires: 1 <= ply, valid attack information.
int search(Worker& worker, int ply, int depth, int alpha, int beta, unsigned flags);

// What the search of one move needs to know of its node.
struct NodeParams {
  int ply;
  int depth;  // remaining, plies
  int beta;
  unsigned flags;     // NodeFlags
  bool inCheck;       // the side to move is
  int eval;           // static evaluation
  int newDepth;       // of the moves, before their extension
  int reduction;      // of late moves
  int futilityLimit;  // late quiet moves that can't lift alpha above this are skipped
};

struct MoveResult {
  enum Kind { Searched, Pruned, Stopped } kind;
  int score;  // of the move; the futility limit when it was pruned, 0 when stopped
};

// Searches one move of the node: futility pruning, make, extension, reduction, search, unmake.
// threat is the move's flag by flagQuietThreats; late moves may be pruned and reduced.
MoveResult searchMove(Worker& worker, const NodeParams& node, const UndoInfo& undo, Move move,
                      bool late, int threat, int alpha, bool hasBestMove);

// The draws by rule, which return 0 before anything else is looked at: the opponent (the side to
// move) can repeat, fifty moves, insufficient material, repetition. May set pv[ply].
bool isDrawByRule(Worker& worker, int ply, int beta);

// Polls the limits; when one is reached the whole search ends. True when the worker must stop.
bool pollLimits(Worker& worker);

// pv[ply] = move alone, or move followed by pv[ply + 1].
void setLine(Worker& worker, int ply, Move move);
void extendLine(Worker& worker, int ply, Move move);

// A score from the table that decides a node of this depth and window.
struct TtEntry;
bool cutsOff(const TtEntry& entry, int score, int depth, int alpha, int beta);

}  // namespace quill
