// The static evaluation of a position: the order of its terms, and how they are put together.
//
// The terms are summed from White's view, and the sum is turned to the side to move at the end.
// Most terms have an opening and an endgame value, blended by the opponent's remaining material.
#pragma once

#include "eval/evaluator.h"

namespace quill {

// Results of evaluate stay within +-MaxEvaluation, so that none can be taken for a mate score.
inline constexpr int MaxEvaluation = 9999;

// The value of the board in centipawns, side to move's view, within +-MaxEvaluation.
// Requires: valid attack information.
int evaluate(Evaluator& evaluator);

}  // namespace quill
