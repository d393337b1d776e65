// placeholder contract, completed with the evaluation
#pragma once
#include "board/board.h"
namespace quill {
struct EvalTables;
struct Evaluator;
int evaluate(Evaluator& evaluator);
}
