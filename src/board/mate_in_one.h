// A cheap detector of mates in one. It makes no move: four patterns (queen contact, rook or queen
// along the king's rank or file, bishop or queen along its diagonals, knight) are tested with set
// arithmetic. It may miss mates, and some distant "mates" can be parried by an interposition.
#pragma once

#include "board/board.h"

namespace quill {

// A move by which the other side mates the colour's king at once, or 0. Reads enemyAttacks and
// blockers, which must be valid, and changes nothing. The move may be made by the side not to move;
// where the mover is to move, a caller that plays it tests it with isLegalMove first.
Move findMateInOne(const Board& board, Colour colour);

}  // namespace quill
