// Pieces that went where they can't get out again.
#pragma once

#include "board/board.h"

namespace quill {

struct Evaluator;

// What trapped pieces cost, White's view, centipawns: knights and bishops in the enemy's corners,
// rooks shut in by their own king.
int trappedPieces(const Evaluator& evaluator);

}  // namespace quill
