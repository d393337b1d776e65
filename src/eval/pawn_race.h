// Races of passed pawns against a side without pieces: who promotes first, and whether the other
// king comes in time.
#pragma once

namespace quill {

struct Evaluator;

// No pawn of the colour is sure to promote.
inline constexpr int NoRace = 128;

// By colour, the moves until its fastest pawn that can't be stopped promotes, or NoRace.
struct RaceCounts {
  int moves[2];
};

// Requires: Evaluator::pawnEntry is the board's.
RaceCounts pawnRaceCounts(const Evaluator& evaluator);

// What the sure promotion is worth, White's view, centipawns; 0 when no pawn is sure to promote or
// both sides promote at about the same time.
// Requires: as pawnRaceCounts.
int pawnRace(const Evaluator& evaluator);

}  // namespace quill
