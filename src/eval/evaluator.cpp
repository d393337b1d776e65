#include "eval/evaluator.h"

namespace quill {

Evaluator::Evaluator(const Board& evaluated, const EvalTables& evalTables)
    : board(evaluated), tables(evalTables), pawnHash(evaluated), pawnEntry(pawnHash.table) {}

void clearEvaluator(Evaluator& evaluator) {
  clearPawnHash(evaluator.pawnHash);
  evaluator.evalCache.entries.fill({});
}

}  // namespace quill
