#include "shell/eval_command.h"

#include <cstdio>
#include <memory>

#include "eval/explain.h"
#include "shell/engine.h"

namespace quill {

namespace {

constexpr int StepColumn = 63;  // width of what stands before a step's value

void printTerm(const TermValues& term) {
  std::printf("%-20s", term.name);
  for (const Colour colour : {White, Black}) {
    if (term.hasPhases) {
      std::printf("  %6i %6i", term.opening[colour], term.endgame[colour]);
    } else {
      std::printf("  %13s", "");
    }
    std::printf(" %6i", term.value[colour]);
  }
  std::printf(" %7i\n", term.value[White] - term.value[Black]);
}

void printStep(const char* name, int value) {
  std::printf("%-*s %7i\n", StepColumn + 1, name, value);
}

void printTerms(const Explanation& explanation) {
  std::printf("%-20s  %20s  %20s\n", "centipawns", "White       ", "Black       ");
  std::printf("%-20s  %6s %6s %6s  %6s %6s %6s %7s\n", "", "open", "end", "value", "open", "end",
              "value", "total");
  TermValues sum{};
  sum.name = "terms";
  for (const TermValues& term : explanation.terms) {
    printTerm(term);
    for (const Colour colour : {White, Black}) sum.value[colour] += term.value[colour];
  }
  printTerm(sum);
}

void printEndgameRules(const EvalSteps& steps) {
  char text[StepColumn + 1];
  if (steps.isExact) {
    std::snprintf(text, sizeof text, "endgame rules: exact result");
  } else if (steps.scale != steps.materialScale) {
    std::snprintf(text, sizeof text, "endgame rules: scale %i/%i", steps.scale, FullScale);
  } else {
    const bool apply = steps.ruled != steps.sum;
    std::snprintf(text, sizeof text, "endgame rules: %s", apply ? "another score" : "none");
  }
  printStep(text, steps.ruled);
}

void printSteps(const EvalSteps& steps, const Board& board) {
  char text[StepColumn + 1];
  std::snprintf(text, sizeof text, "material balance (scale %i/%i)", steps.materialScale,
                FullScale);
  printStep(text, steps.material);
  printStep("trapped pieces", steps.trapped);
  printStep("sum, White's view", steps.sum);
  printEndgameRules(steps);
  const char* const mover = board.stm == White ? "White" : "Black";
  if (!steps.isExact) {
    std::snprintf(text, sizeof text, "faded after %i quiet plies", board.quietPlies());
    printStep(text, steps.damped);
    const int own = board.stm == White ? steps.damped : -steps.damped;
    std::snprintf(text, sizeof text, "%s's view, with %i for the side to move", mover,
                  SideToMoveBonus);
    printStep(text, own + SideToMoveBonus);
    std::snprintf(text, sizeof text, "scaled by %i/%i", steps.scale, FullScale);
    printStep(text, steps.scaled);
  }
  std::snprintf(text, sizeof text, "value, %s's view, within %i", mover, MaxEvaluation);
  printStep(text, steps.result);
}

}  // namespace

void evalCommand(Engine& engine, const char* /*rest*/) {
  const Board& board = engine.pool.board();
  // One of its own: the master's remembers values of other weights and fifty-move counts.
  const auto evaluator = std::make_unique<Evaluator>(board, engine.evalTables);
  const Explanation explanation = explain(*evaluator);
  printTerms(explanation);
  printSteps(explanation.steps, board);
}

}  // namespace quill
