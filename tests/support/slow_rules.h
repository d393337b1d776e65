// The rules of chess a second time: on a plain array of squares, by walking from square to square
// and by making every move to see whether it leaves the king attacked. Nothing here reads the
// engine's tables or its sets, so that an agreement of both says something.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "board/board.h"

namespace quill::test {

using Squares = std::array<PieceCode, 64>;

// All legal moves, in increasing order of their bits.
std::vector<Move> slowLegalMoves(const Board& board);

// What generateCaptures promises, in increasing order of the bits.
std::vector<Move> slowCaptures(const Board& board, Bitboard targets);

// Where the pieces stand after the move.
Squares slowSquaresAfter(Squares squares, Move move);

// Every square that the colour attacks, the other king taken off the board.
Bitboard slowAttacks(const Squares& squares, Colour colour);

// The pieces that stand alone between the colour's king and an enemy slider.
Bitboard slowBlockers(const Squares& squares, Colour colour);

// What a slider of the type attacks from the square, occupied squares being those of the set.
Bitboard slowSliderAttacks(int type, Square from, Bitboard occupied);

// The name of the first field in which the boards differ, the used parts of the stacks included;
// empty for equal boards.
std::string difference(const Board& a, const Board& b);

}  // namespace quill::test
