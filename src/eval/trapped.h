// Pieces that went where they can't get out again.
#pragma once

#include "board/board.h"

namespace quill {

struct Evaluator;

// Trapped knights and bishops in the enemy's corners and rooks shut in by their own king, White's
// view, centipawns.
int trappedPieces(const Evaluator& evaluator);

}  // namespace quill
