// Square values, mobility, threats and open files of the pieces, and their attack on the king.
#pragma once

#include "board/board.h"
#include "eval/king_safety.h"
#include "eval/score_pair.h"

namespace quill {

struct Evaluator;

// The parts of one colour's piece terms, that colour's view, centipawns.
struct PieceSums {
  ScorePair contacts;  // pawns against pieces
  ScorePair knights;
  ScorePair bishops;
  ScorePair rooks;
  ScorePair queens;
  AttackRecord attack;

  ScorePair total() const { return contacts + knights + bishops + rooks + queens; }
};

PieceSums pieceSums(const Evaluator& evaluator, Colour colour);

// The colour's piece terms and king attack, that colour's view, blended, centipawns.
// Requires: kingShelter of the other colour was called for this position; valid blockers.
int pieceTerms(const Evaluator& evaluator, Colour colour);

}  // namespace quill
