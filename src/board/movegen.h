// Strictly legal move generation in three families, and the legality test of a single move.
//
// No move is made to test it: pins come from blockers, the king's safety from enemyAttacks; en
// passant and castling are tested directly. The order of the moves is fixed, because the search's
// ordering starts from it. A generator writes from the given slot of a list of MaxMoves entries on
// and returns the slot after the last move. The enemy king is never captured, not even in a
// position from a FEN that would allow it.
#pragma once

#include "board/board.h"
#include "board/make_move.h"

namespace quill {

// All legal moves; refreshes the attack information first. An empty result is mate or stalemate.
Move* generateLegal(Board& board, Move* list);

// How many moves generateLegal would write. Takes no attack information from the Board and leaves
// it as it is.
int countLegal(const Board& board);

// All legal moves of a side that is not in check. Requires: valid attack information, not in check.
Move* generateMoves(const Board& board, Move* list);

// All legal moves of a side in check. Requires: valid attack information, in check.
Move* generateEvasions(const Board& board, Move* list);

// For the quiescence search: captures on the targets, queen promotions, and steps to the seventh
// rank by pawns that can promote next, in order of the moving piece from pawn to king. Promotions,
// en passant and captures by pinned pawns are included whatever the targets are.
// Requires: valid attack information, not in check.
Move* generateCaptures(const Board& board, Move* list, Bitboard targets);

// Whether generateLegal would produce the move. Any 32 bits may be given; the mark is ignored. A
// move from the transposition table is safe to play because of this test.
// Requires: valid attack information.
bool isLegalMove(const Board& board, Move move);

// The epSquare if an enemy pawn can really have just made a double step to it: a pawn on its fourth
// rank with two empty squares behind it; else 0.
Square usableEpSquare(const Board& board);

// The enemy pawns, knights and sliders that give check to the side to move.
Bitboard findCheckers(const Board& board);

}  // namespace quill
