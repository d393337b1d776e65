// Static exchange evaluation: what captures on one square win or lose, without making moves.
#pragma once

#include "board/board.h"

namespace quill {

// Value by piece type in pawns: 0, pawn 1, knight 3, bishop 3, rook 4, queen 8, king 100.
inline constexpr int SeeValue[8] = {0, 1, 3, 3, 4, 8, 100, 0};

// What the move gains, in units of SeeValue, when both sides then capture on its destination with
// their least valuable piece as long as it pays. Only the sign is exact (at least 0: nothing is
// lost); the size of a non-zero value is a bound in the direction of its sign. The move may have
// been made already, and the mover need not be the side to move.
// Requires: valid attack information.
int see(const Board& board, Move move);

// Minus what the opponent wins by capturing the piece on the square: 0 when it is safe, negative
// when it hangs. Pinned pieces do not capture but still block lines.
// Requires: a piece on the square, valid attack information.
int seeSquare(const Board& board, Square square);

}  // namespace quill
