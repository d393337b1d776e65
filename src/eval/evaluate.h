// The static evaluation of a position: the order of its terms, and how they are put together.
//
// The terms are summed from White's view, and the sum is turned to the side to move at the end.
// Most terms have an opening and an endgame value, blended by the opponent's remaining material.
#pragma once

#include <array>

#include "eval/evaluator.h"

namespace quill {

// Results of evaluate stay within +-MaxEvaluation, so that none can be taken for a mate score.
inline constexpr int MaxEvaluation = 9999;

// Stands for a value that nobody has needed yet; a side in check is evaluated only on demand.
inline constexpr int NotEvaluated = -32768;

inline constexpr int SideToMoveBonus = 7;  // centipawns

// One evaluation step by step, in centipawns and from White's view unless a line says otherwise.
struct EvalSteps {
  int material;
  int trapped;
  // By colour, from that colour's view.
  std::array<int, 2> pawns;   // structure and passed pawns
  std::array<int, 2> king;    // its shelter, or its activity in the endgame
  std::array<int, 2> pieces;  // squares, mobility, threats, files, the attack on the enemy king

  int sum;            // of all terms
  int ruled;          // after the rules for endings
  bool isExact;       // ruled is the result; damped and scaled are 0
  int damped;         // faded towards the fifty-move draw
  int materialScale;  // share of the score that counts by the leader's pawns, in 1/FullScale
  int scale;          // the same after the rules for endings
  int scaled;         // side to move's view: damped, with the bonus of the side to move, scaled
  int result;         // side to move's view, within +-MaxEvaluation
};

// Evaluates the board without looking into the cache, or writing to it.
// Requires: valid attack information.
EvalSteps evaluateSteps(Evaluator& evaluator);

// An opening and an endgame value blended by the opponent's material points. With more than 32
// points it extrapolates.
constexpr int blend(int opening, int endgame, int points) {
  return (opening * points + (32 - points) * endgame + 16) >> 5;
}

// The value of the board in centipawns, side to move's view, within +-MaxEvaluation.
// Requires: valid attack information.
int evaluate(Evaluator& evaluator);

// The board's value: the known one, or if that is NotEvaluated, the result of evaluate, with its
// requirements and side effects.
inline int evaluated(Evaluator& evaluator, int known) {
  return known == NotEvaluated ? evaluate(evaluator) : known;
}

}  // namespace quill
