// What the pieces are worth in each other's company.
#pragma once

#include "board/board.h"

namespace quill {

// The material term, White's view, centipawns. Where a side is ahead, scale becomes the share (in
// 1/1024) of the whole score that its number of pawns lets count; the fewer pawns, the harder it is
// to win.
int materialBalance(const Board& board, int& scale);

}  // namespace quill
