// Text forms of moves: a long one that needs no move generation, standard algebraic notation, and a
// reader for almost any common way of writing a move.
#pragma once

#include <cstdio>

#include "board/board.h"

namespace quill {

// Bytes that any text of moveToText or moveToSan fits in, the terminator included.
inline constexpr int MoveTextSize = 16;

// Long algebraic text (Ng1f3, e4xd5, e7e8=Q, O-O; "%" for a null move), the position being the one
// before or after the move. Returns the position of the terminator.
char* moveToText(const Board& board, char* out, Move move);

// Standard algebraic notation with minimal disambiguation, without check signs; "%" for a null
// move. Requires: the position before the move. Refreshes the attack information.
void moveToSan(Board& board, char* out, Move move);

// The legal move that the text means, in coordinates (e2e4, e7e8q), algebraic (Nf3, exd5, e8=Q+) or
// O-O. Changes nothing but the attack information.
// On failure: 0 when the text matches no legal move, or, after one line to messages (none for
// silence), when it holds a foreign character or matches several moves.
Move parseMove(Board& board, const char* text, std::FILE* messages = stderr);

// The move as the protocol writes it: e2e4, e7e8Q (upper case), "0000" for no move. Returns the
// position of the terminator; at most 6 bytes are written.
char* uciMoveText(char* out, Move move);

}  // namespace quill
