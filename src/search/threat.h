// What a side stands to lose at once, a static guess for the pruning decisions of the search.
#pragma once

#include "board/board.h"

namespace quill {

// Centipawns that the side may lose to promotions, to captures of its pinned rooks and queens and
// to pawn forks; 0 when nothing threatens. The side need not be to move. Requires: valid attack
// information.
int threatValue(const Board& board, Colour side);

}  // namespace quill
