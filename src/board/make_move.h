// Making and taking back moves on a Board, and the attack information for the side to move.
//
// A move goes like this: copy the UndoInfo, makeMove, updateAttackInfo, and later unmakeMove with
// the copy. Nothing here allocates memory or computes a key from scratch.
#pragma once

#include "board/board.h"

namespace quill {

// Plays the move. enemyAttacks and blockers are stale until updateAttackInfo is called.
// Requires: the move is legal; ply < StackSize - 1.
void makeMove(Board& board, Move move);

// Takes back the last move. The Board is as it was before the move, attack information included.
// Requires: move is the last move made; undo was copied from the Board just before it.
void unmakeMove(Board& board, Move move, const UndoInfo& undo);

// The key of the position after the move, without playing it; 0 is the null move. With it, the
// table's memory can be prefetched before the move is made.
// Requires: the move is legal.
std::uint64_t keyAfter(const Board& board, Move move);

// Passes the turn, which counts as irreversible. The attack information is stale afterwards.
// Requires: ply < StackSize - 1; not in check, though the console's "%" may pass in check.
void makeNullMove(Board& board);
void unmakeNullMove(Board& board, const UndoInfo& undo);

// Every square that the colour attacks, computed without the other colour's king.
Bitboard attacksBy(const Board& board, Colour colour);

// The pieces of either colour that stand alone between the colour's king and an enemy slider.
Bitboard blockersOf(const Board& board, Colour colour);

// Recomputes enemyAttacks and blockers for the side now to move.
void updateAttackInfo(Board& board);

// makeMove, or makeNullMove for 0.
void playMove(Board& board, Move move);

}  // namespace quill
