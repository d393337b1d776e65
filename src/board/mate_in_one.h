// A cheap detector of mates in one. It makes no move: set arithmetic tests four patterns (queen
// beside the king, rook or queen along its rank or file, bishop or queen along its diagonals,
// knight). It misses other mates, and a few distant "mates" can be parried by an interposition.
#pragma once

#include "board/board.h"

namespace quill {

// A move by which the other side mates the colour's king at once, or 0. Either side may be the one
// to move. A caller that wants to play the move tests it with isLegalMove first.
// Requires: valid attack information.
Move findMateInOne(const Board& board, Colour colour);

}  // namespace quill
