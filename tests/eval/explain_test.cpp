#include "eval/explain.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "support/mirror.h"
#include "support/play.h"
#include "support/random_positions.h"

namespace quill::test {
namespace {

const EvalTables Tables;

// How often the steps that are not always taken were.
struct StepCounts {
  int exact = 0;
  int ruled = 0;
  int scaled = 0;
  int damped = 0;
};

// Adds the explanation up, step by step, to what evaluate gives.
void checkExplanation(const Board& board, StepCounts& counts) {
  SCOPED_TRACE(describe(board));
  Evaluator evaluator(board, Tables);
  const Explanation explanation = explain(evaluator);
  EXPECT_EQ(evaluator.evalCount, 0u);
  const EvalSteps& steps = explanation.steps;

  int sum = steps.material + steps.trapped;
  for (const TermValues& term : explanation.terms) {
    sum += term.value[White] - term.value[Black];
    if (!term.hasPhases) continue;
    for (const Colour c : {White, Black}) {
      const int points = materialPoints(board.side[c ^ 1].material);
      if (points == 0) {
        EXPECT_EQ(term.value[c], term.endgame[c]) << term.name;
      } else if (points == 32) {
        EXPECT_EQ(term.value[c], term.opening[c]) << term.name;
      }
    }
  }
  EXPECT_EQ(sum, steps.sum);
  for (const int rounding : explanation.terms[RoundingTerm].value) EXPECT_LE(std::abs(rounding), 4);

  const int sign = board.stm == White ? 1 : -1;
  if (steps.isExact) {
    EXPECT_EQ(steps.result, sign * steps.ruled);
    ++counts.exact;
  } else {
    EXPECT_LE(std::abs(steps.damped), std::abs(steps.ruled));
    const int full = sign * steps.damped + SideToMoveBonus;
    EXPECT_EQ(steps.scaled, steps.scale == FullScale ? full : (full * steps.scale) >> 10);
    EXPECT_EQ(steps.result, std::clamp(steps.scaled, -MaxEvaluation, MaxEvaluation));
    counts.ruled += steps.ruled != steps.sum ? 1 : 0;
    counts.scaled += steps.scale != steps.materialScale ? 1 : 0;
    counts.damped += steps.damped != steps.ruled ? 1 : 0;
  }
  EXPECT_EQ(evaluate(evaluator), steps.result);
}

TEST(Explain, TermsAndStepsAddUpToTheEvaluation) {
  RandomPositions random(31415);
  StepCounts counts;
  for (int i = 0; i < PropertyPositions / 10 && !HasFailure(); ++i) {
    Board board = i % 2 == 0 ? random.next() : sparsePosition(random);
    board.lastIrreversible = board.ply - static_cast<int>(random.below(110));
    checkExplanation(board, counts);
  }
  for (const int count : {counts.exact, counts.ruled, counts.scaled, counts.damped}) {
    EXPECT_GT(count, PropertyPositions / 1000) << "too few positions with the step";
  }
}

}  // namespace
}  // namespace quill::test
