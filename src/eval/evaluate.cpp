#include "eval/evaluate.h"

#include <algorithm>

#include "eval/endgame.h"
#include "eval/king_safety.h"
#include "eval/material.h"
#include "eval/passed_pawns.h"
#include "eval/pawns.h"
#include "eval/pieces.h"
#include "eval/trapped.h"

namespace quill {

namespace {

constexpr int QuietStretch = 32;  // plies without capture or pawn move that cost nothing

// One colour's pawn structure and passed pawns, blended by the opponent's material. Unlike the
// piece terms they extrapolate when the opponent has more than 32 points.
int pawnTerm(const Evaluator& evaluator, Colour colour) {
  int opening = evaluator.pawnEntry->side[colour].opening;
  int endgame = evaluator.pawnEntry->side[colour].endgame;
  passedPawns(evaluator, colour, opening, endgame);
  return blend(opening, endgame, materialPoints(evaluator.board.side[colour ^ 1].material));
}

int clamped(int score) { return std::clamp(score, -MaxEvaluation, MaxEvaluation); }

// The score fades to almost nothing as the fifty-move draw comes near.
int damped(int score, int quietPlies) {
  if (quietPlies <= QuietStretch) return score;
  return (score * std::max(96 - quietPlies, 1)) >> 6;
}

// Both callers have a copy of their own: the one that needs the result alone keeps no record.
[[gnu::always_inline]] inline EvalSteps takeSteps(Evaluator& evaluator) {
  const Board& board = evaluator.board;
  EvalSteps steps{};
  const MaterialEntry& material = evaluator.material.find(board);
  int scale = material.scale;
  steps.material = material.balance;
  steps.materialScale = scale;
  steps.trapped = trappedPieces(evaluator);
  int score = steps.material + steps.trapped;
  pawnStructure(evaluator);
  steps.pawns = {pawnTerm(evaluator, White), pawnTerm(evaluator, Black)};
  score += steps.pawns[White] - steps.pawns[Black];
  // Both shelters must be known before the first attack on a king reads one.
  steps.king = {kingShelter(evaluator, White), kingShelter(evaluator, Black)};
  score += steps.king[White] - steps.king[Black];
  steps.pieces = {pieceTerms(evaluator, White), pieceTerms(evaluator, Black)};
  score += steps.pieces[White] - steps.pieces[Black];
  steps.sum = score;

  steps.isExact = material.isEnding && endgameRules(evaluator, score, scale);
  steps.ruled = score;
  steps.scale = scale;
  if (steps.isExact) {
    steps.result = clamped(board.stm == White ? steps.ruled : -steps.ruled);
    return steps;
  }
  steps.damped = damped(steps.ruled, board.quietPlies());
  const int ownView = board.stm == White ? steps.damped : -steps.damped;
  steps.scaled = ((ownView + SideToMoveBonus) * steps.scale) >> 10;
  steps.result = clamped(steps.scaled);
  return steps;
}

}  // namespace

EvalSteps evaluateSteps(Evaluator& evaluator) { return takeSteps(evaluator); }

int evaluate(Evaluator& evaluator) {
  ++evaluator.evalCount;
  const std::uint64_t key = EvalCache::keyOf(evaluator.board);
  EvalCache::Entry& slot = evaluator.evalCache[key];
  if (slot.key == key) return slot.score;
  slot = {key, takeSteps(evaluator).result};
  return slot.score;
}

}  // namespace quill
