// The kinds of search node, and what the search of one move needs to know of its node. A split
// point carries them to the threads that help there.
#pragma once

namespace quill {

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

struct NodeParams {
  int ply;    // from the root
  int depth;  // remaining, plies
  int beta;
  unsigned flags;     // NodeFlags
  bool inCheck;       // the side to move is
  int eval;           // static evaluation, centipawns
  int newDepth;       // of the moves, before their extension
  int reduction;      // of late moves, plies
  int futilityLimit;  // late quiet moves that can't lift alpha above this are skipped
};

}  // namespace quill
