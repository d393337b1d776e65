#include "eval/explain.h"

#include <algorithm>

#include "eval/king_safety.h"
#include "eval/passed_pawns.h"
#include "eval/pieces.h"

namespace quill {

namespace {

constexpr const char* Names[EvalTermCount] = {
    "pawn structure", "passed pawns", "pawns against pieces", "knights",  "bishops", "rooks",
    "queens",         "rounding",     "attack on king",       "own king",
};

// Fills in the terms of one colour. Requires: evaluateSteps has just evaluated the board.
void explainColour(const Evaluator& evaluator, Colour colour, Explanation& explanation) {
  auto& terms = explanation.terms;
  const EvalSteps& steps = explanation.steps;
  const auto c = static_cast<unsigned>(colour);
  const int opponentPoints = materialPoints(evaluator.board.side[c ^ 1].material);

  int rest = steps.pawns[c] + steps.pieces[c];
  const auto addPhases = [&](EvalTerm term, int opening, int endgame, int share) {
    TermValues& values = terms[term];
    values.hasPhases = true;
    values.opening[c] = opening;
    values.endgame[c] = endgame;
    values.value[c] = blend(opening, endgame, share);
    rest -= values.value[c];
  };
  const auto& structure = evaluator.pawnEntry->side[c];
  addPhases(PawnStructureTerm, structure.opening, structure.endgame, opponentPoints);
  int opening = 0;
  int endgame = 0;
  passedPawns(evaluator, colour, opening, endgame);
  addPhases(PassedPawnTerm, opening, endgame, opponentPoints);

  const PieceSums sums = pieceSums(evaluator, colour);
  const auto addPair = [&](EvalTerm term, ScorePair pair) {
    addPhases(term, openingOf(pair), endgameOf(pair), std::min(opponentPoints, 32));
  };
  addPair(ContactTerm, sums.contacts);
  addPair(KnightTerm, sums.knights);
  addPair(BishopTerm, sums.bishops);
  addPair(RookTerm, sums.rooks);
  addPair(QueenTerm, sums.queens);

  const int attack = kingAttack(evaluator, colour, sums.attack);
  terms[KingAttackTerm].value[c] = attack;
  terms[KingTerm].value[c] = steps.king[c];
  terms[RoundingTerm].value[c] = rest - attack;
}

}  // namespace

Explanation explain(Evaluator& evaluator) {
  Explanation explanation{};
  explanation.steps = evaluateSteps(evaluator);
  for (int term = 0; term < EvalTermCount; ++term) explanation.terms[term].name = Names[term];
  for (const Colour colour : {White, Black}) explainColour(evaluator, colour, explanation);
  return explanation;
}

}  // namespace quill
