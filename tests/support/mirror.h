// The same position with the colours exchanged, and positions with few men.
#pragma once

#include "board/board.h"
#include "support/random_positions.h"

namespace quill::test {

// The board turned upside down, with the colours and the side to move exchanged. The stacks are
// empty, the attack information is valid.
Board mirrored(const Board& board);

// A legal position of two kings and up to four more men, anywhere on the board. The stacks are
// empty, the attack information is valid.
Board sparsePosition(RandomPositions& random);

}  // namespace quill::test
