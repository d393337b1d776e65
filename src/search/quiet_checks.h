// Generator of the moves that the quiescence search tries behind its captures: checks, and pawns
// that arrive one step before promotion.
#pragma once

#include "board/board.h"

namespace quill {

// Writes legal checks onto the squares (empty ones, or enemy pieces that were not worth capturing),
// and single pawn steps onto the seventh rank, best first, each once; returns the end. Direct
// checks and steps that lose material are left out, so are castling, en passant and promotions.
// Requires: valid attack information, not in check; room for MaxMoves moves.
Move* generateQuietChecks(const Board& board, Move* list, Bitboard squares);

}  // namespace quill
