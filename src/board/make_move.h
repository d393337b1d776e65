// Making and taking back moves on a Board, and the attack information for the side to move.
//
// The road of one move: copy the UndoInfo, makeMove, updateAttackInfo, ..., unmakeMove with the
// copy. Nothing here allocates or recomputes a key from scratch.
#pragma once

#include "board/board.h"

namespace quill {

// Plays the move. Afterwards enemyAttacks and blockers are stale until updateAttackInfo.
// Requires: the move is legal; ply < StackSize - 1.
void makeMove(Board& board, Move move);

// Takes back the last move. Afterwards the Board, attack information included, is as before it.
// Requires: move is the last move made; undo was copied from the Board just before it.
void unmakeMove(Board& board, Move move, const UndoInfo& undo);

// The key that playing the move would give, without playing it; 0 is the null move. Lets the table
// be asked for a child's line long before the child is searched.
// Requires: the move is legal.
std::uint64_t keyAfter(const Board& board, Move move);

// Passes the turn; counts as irreversible. Attack information is stale afterwards.
// Requires: the side to move is not in check (the console's "%" may break this); ply < StackSize
// - 1.
void makeNullMove(Board& board);
void unmakeNullMove(Board& board, const UndoInfo& undo);

// Every square that the colour attacks, with the other colour's king taken off the board.
Bitboard attacksBy(const Board& board, Colour colour);

// Recomputes enemyAttacks and blockers for the side now to move.
void updateAttackInfo(Board& board);

// makeMove, or makeNullMove for 0.
void playMove(Board& board, Move move);

}  // namespace quill
