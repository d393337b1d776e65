// What is known of endings with few men: exact results, draws, and how much of a lead counts.
#pragma once

namespace quill {

struct Evaluator;

// Corrects the score (White's view, centipawns) and the share of it that counts (scale, in 1/1024).
// True when the score is the final result: no bonus for the side to move, no scale, no damping.
// Requires: Evaluator::pawnEntry is the board's.
bool endgameRules(const Evaluator& evaluator, int& score, int& scale);

}  // namespace quill
