// Conversion between a Board and Forsyth-Edwards Notation.
//
// The reader is tolerant: trailing fields may be missing, a rank may be left empty, and the
// en-passant field may name either the square that the pawn passed over or the one where it stands,
// as the writer does. Move counters are ignored.
#pragma once

#include <cstdio>

#include "board/board.h"
#include "shell/text.h"

namespace quill {

// Sets the position; the stacks start anew and the attack information is valid. What is wrong with
// the text goes to messages (nullptr: nowhere), one line for each fault; a castling right without
// its king and rook in place is a fault, but only that right is dropped.
// On failure: false; the Board is left as it was.
bool setFen(Board& board, const char* text, std::FILE* messages = stderr);

// The position as FEN text. The en-passant field names the pawn's own square.
EngineString getFen(const Board& board);

}  // namespace quill
