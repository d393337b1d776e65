// Strictly legal move generation in three families, and the legality test of a single move.
//
// No move is made to test it: pins come from blockers, the king's safety from enemyAttacks; en
// passant and castling are tested directly. The order of the moves is fixed, since the search's
// ordering starts from it. A generator writes into a list of MaxMoves entries from the first free
// slot on and returns the slot behind the last move. The enemy king is never a target, whatever a
// FEN claims.
#pragma once

#include "board/board.h"
#include "board/make_move.h"

namespace quill {

// All legal moves; refreshes the attack information first. An empty result is mate or stalemate.
Move* generateLegal(Board& board, Move* list);

// All legal moves of a side that is not in check. Requires: valid attack information, not in check.
Move* generateMoves(const Board& board, Move* list);

// All legal moves of a side in check. Requires: valid attack information, in check.
Move* generateEvasions(const Board& board, Move* list);

// For the quiescence search: captures onto the targets, queen promotions, pawn steps to the seventh
// rank, grouped by the moving piece from pawn to king. En passant and captures by pinned pawns come
// whatever the targets are. Requires: valid attack information, not in check.
Move* generateCaptures(const Board& board, Move* list, Bitboard targets);

// True exactly when generateLegal would produce the move, whatever 32 bits it is given (the mark in
// bit 30 apart). The transposition table's safety rests on this. Requires: valid attack
// information.
bool isLegalMove(const Board& board, Move move);

// The epSquare when an en-passant capture there can exist: an enemy pawn stands on its fourth rank
// with the two squares behind it empty; else 0.
Square usableEpSquare(const Board& board);

// The enemy pawns, knights and sliders that give check to the side to move.
Bitboard findCheckers(const Board& board);

}  // namespace quill
