// The evaluation of a position taken apart, for a person to read.
//
// The numbers come from the functions that evaluate itself calls, so that they are what it adds up.
#pragma once

#include <array>

#include "eval/evaluate.h"

namespace quill {

// What one term gives to each colour, by colour and from that colour's view, centipawns.
struct TermValues {
  const char* name;
  bool hasPhases;              // the value is blended from the next two
  std::array<int, 2> opening;  // 0 without phases
  std::array<int, 2> endgame;
  std::array<int, 2> value;
};

// The terms that both colours have, in the order in which they are shown.
enum EvalTerm : int {
  PawnStructureTerm,
  PassedPawnTerm,
  ContactTerm,
  KnightTerm,
  BishopTerm,
  RookTerm,
  QueenTerm,
  RoundingTerm,  // terms are blended together; this is what blending them one by one adds or loses
  KingAttackTerm,
  KingTerm,
  EvalTermCount
};

struct Explanation {
  std::array<TermValues, EvalTermCount> terms;  // by EvalTerm; the values sum up to those of steps
  EvalSteps steps;
};

// Explains what evaluate gives for the board when it is not in the cache.
// Requires: valid attack information.
Explanation explain(Evaluator& evaluator);

}  // namespace quill
