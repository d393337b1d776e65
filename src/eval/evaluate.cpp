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

constexpr int SideToMoveBonus = 7;  // centipawns
constexpr int FullScale = 1024;
constexpr int QuietStretch = 32;  // plies without capture or pawn move that cost nothing

// One colour's pawn structure and passed pawns, blended by the opponent's material. Unlike the
// piece terms they extrapolate when the opponent has more than 32 points.
int pawnTerm(const Evaluator& evaluator, Colour colour) {
  int opening = evaluator.pawnEntry->side[colour].opening;
  int endgame = evaluator.pawnEntry->side[colour].endgame;
  passedPawns(evaluator, colour, opening, endgame);
  const int phase = materialPoints(evaluator.board.side[colour ^ 1].material);
  return (opening * phase + (32 - phase) * endgame + 16) >> 5;
}

int clamped(int score) { return std::clamp(score, -MaxEvaluation, MaxEvaluation); }

// The score fades to almost nothing as the fifty-move draw comes near.
int damped(int score, int quietPlies) {
  if (quietPlies <= QuietStretch) return score;
  return (score * std::max(96 - quietPlies, 1)) >> 6;
}

int computeScore(Evaluator& evaluator) {
  const Board& board = evaluator.board;
  int scale = FullScale;
  int score = materialBalance(board, scale) + trappedPieces(evaluator);
  pawnStructure(evaluator);
  score += pawnTerm(evaluator, White) - pawnTerm(evaluator, Black);
  // Both shelters must be known before the first attack on a king reads one.
  score += kingShelter(evaluator, White) - kingShelter(evaluator, Black);
  score += pieceTerms(evaluator, White) - pieceTerms(evaluator, Black);

  const bool isExact = endgameRules(evaluator, score, scale);
  if (isExact) return clamped(board.stm == White ? score : -score);
  score = damped(score, board.quietPlies());
  const int ownView = board.stm == White ? score : -score;
  return clamped(((ownView + SideToMoveBonus) * scale) >> 10);
}

}  // namespace

int evaluate(Evaluator& evaluator) {
  ++evaluator.evalCount;
  const std::uint64_t key = evaluator.board.key ^ static_cast<std::uint64_t>(evaluator.board.stm);
  EvalCache::Entry& slot = evaluator.evalCache[key];
  if (slot.key == key) return slot.score;
  slot = {key, computeScore(evaluator)};
  return slot.score;
}

}  // namespace quill
