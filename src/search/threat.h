// What a side stands to lose at once: a static guess for the search's decisions on pruning.
#pragma once

#include "board/board.h"

namespace quill {

// Centipawns that the side, either one, may lose to promotions, to captures of its pinned rooks and
// queens and to pawn forks; 0 when nothing threatens. Requires: valid attack information.
int threatValue(const Board& board, Colour side);

}  // namespace quill
