// What passed pawns are worth besides their squares: support, blockade, distance of the kings.
#pragma once

#include "board/board.h"

namespace quill {

struct Evaluator;

// Adds the colour's values to its opening and endgame sums, that colour's view, centipawns.
// Requires: Evaluator::pawnEntry is the board's; valid attack information.
void passedPawns(const Evaluator& evaluator, Colour colour, int& opening, int& endgame);

}  // namespace quill
