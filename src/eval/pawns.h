// What depends on the pawns alone: computed once for each formation, and kept in the pawn hash.
#pragma once

#include "eval/pawn_hash.h"

namespace quill {

struct Evaluator;

// The entry of the board's pawns, found or computed; it is left in Evaluator::pawnEntry too.
const PawnEntry& pawnStructure(Evaluator& evaluator);

// How well its pawns shelter a king of the colour on this square of its back rank, in shelter
// points: -1 for a full shelter, -16 for none, and less when enemy pawns storm it.
int shelterAt(const Board& board, Colour colour, Square square);

}  // namespace quill
