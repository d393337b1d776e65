// What the pieces are worth together.
#pragma once

#include "board/board.h"

namespace quill {

// The material term, White's view, centipawns. When a side is ahead in points, scale is set to the
// share of the whole score that counts, in 1/1024: the fewer pawns it has, the harder it is to win.
int materialBalance(const Board& board, int& scale);

}  // namespace quill
