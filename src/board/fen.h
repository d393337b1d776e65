// Conversion between a Board and Forsyth-Edwards Notation.
//
// The reader is tolerant: trailing fields may be missing, a rank field may be empty, the en-passant
// field may name the passed square or the pawn's own (as the writer does). Move counters are
// ignored.
#pragma once

#include <cstdio>

#include "board/board.h"
#include "shell/text.h"

namespace quill {

// Sets the position; the stacks start anew and the attack information is valid.
// On failure: false after one line to messages (none for silence); the Board is left as it was.
bool setFen(Board& board, const char* text, std::FILE* messages = stderr);

// The position as FEN text. The en-passant field names the pawn's own square.
EngineString getFen(const Board& board);

}  // namespace quill
