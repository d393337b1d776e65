// Static exchange evaluation: what a capture sequence on one square wins or loses, without making
// moves.
#pragma once

#include "board/board.h"

namespace quill {

// Value by piece type in pawns: 0, pawn 1, knight 3, bishop 3, rook 4, queen 8, king 100.
inline constexpr int SeeValue[8] = {0, 1, 3, 3, 4, 8, 100, 0};

// What the side that makes the move gains when it lands and both sides then capture on its
// destination, each with its least valuable piece, for as long as it pays; in units of SeeValue.
// The sign is exact (at least 0: loses nothing); the size of a non-zero value is a bound in the
// direction of its sign. The move may have been made already, and the mover need not be the side to
// move.
// Requires: valid attack information.
int see(const Board& board, Move move);

// Minus the best that the opponent of the piece on the square can win by capturing there: 0 when it
// is safe, negative when it hangs. Pinned capturers do not count but still block lines.
// Requires: a piece on the square, valid attack information.
int seeSquare(const Board& board, Square square);

}  // namespace quill
