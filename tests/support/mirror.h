// The same position with the colours exchanged, and positions with few men.
#pragma once

#include "board/board.h"
#include "support/random_positions.h"

namespace quill::test {

// The board turned top to bottom, the colours and the side to move exchanged; stacks empty, attack
// information valid.
Board mirrored(const Board& board);

// A legal position of two kings and up to four more men, anywhere; stacks empty, attack information
// valid.
Board sparsePosition(RandomPositions& random);

}  // namespace quill::test
