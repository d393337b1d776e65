// The position drawn for a person, with the latest moves beside it.
#pragma once

#include <cstdio>

#include "board/board.h"

namespace quill {

// Writes the diagram, up to 24 half-moves of history, a material summary, the FEN text and both
// keys. A null stream stands for standard output.
void printBoard(const Board& board, std::FILE* stream = nullptr);

}  // namespace quill
