// Short ways to a board and to one of its moves.
#pragma once

#include <string>
#include <vector>

#include "board/board.h"

namespace quill::test {

// The position of the FEN, attack information valid. A bad FEN fails the test.
Board boardOf(const std::string& fen);

// The legal move with these squares ("e2e4"); of promotions the queen's, unless a fifth letter
// names another ("e7e8n"). Without such a move the test fails and the result is 0.
Move moveOf(Board& board, const std::string& squares);

// Plays moves written in any form, a blank between them, as part of a game of any length. An
// illegal one fails the test.
void playMoves(Board& board, const std::string& texts);

// All legal moves, in the generator's order.
std::vector<Move> legalMovesOf(Board& board);

// The captures onto the targets, in the generator's order. Requires: no check.
std::vector<Move> capturesOf(const Board& board, Bitboard targets = ~Bitboard{0});

// Whether the move is among the others, but for its mark.
bool isOneOf(const std::vector<Move>& moves, Move move);

}  // namespace quill::test
