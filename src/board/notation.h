// Moves as text: a long form that needs no move generation, standard algebraic notation, and a
// reader for almost any common way of writing a move.
#pragma once

#include <cstdio>

#include "board/board.h"

namespace quill {

// Bytes enough for any text of moveToText or moveToSan, the terminator included.
inline constexpr int MoveTextSize = 16;

// Long algebraic text (Ng1f3, e4xd5, e7e8=Q, O-O; "%" for a null move). The Board may be the one
// before or after the move. Returns the position of the terminator.
char* moveToText(const Board& board, char* out, Move move);

// Standard algebraic notation with minimal disambiguation, without check signs; "%" for a null
// move. Refreshes the attack information.
// Requires: the Board before the move.
void moveToSan(Board& board, char* out, Move move);

// The legal move that the text means, in coordinates (e2e4, e7e8q), algebraic (Nf3, exd5, e8=Q+) or
// O-O. Changes nothing but the attack information.
// On failure: 0 when the text matches no legal move; also when it matches several or holds a
// character that no move contains, with one line to messages (nullptr: nowhere).
Move parseMove(Board& board, const char* text, std::FILE* messages = stderr);

// The case of the letter that names a promotion piece.
enum class PromotionCase : bool { Upper, Lower };

// The move as the protocol writes it: e2e4, e7e8Q, "0000" for no move. Returns the position of the
// terminator; at most 6 bytes are written.
char* uciMoveText(char* out, Move move, PromotionCase promotionCase = PromotionCase::Upper);

}  // namespace quill
