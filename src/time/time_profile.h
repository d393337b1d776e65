// How the clock is shared out over the moves to come: the numbers in which one way of keeping time
// differs from another. The time control works by one such record.
#pragma once

#include <array>
#include <cstdint>

namespace quill {

// The phases of a search, by their budgets.
enum TimePhase : int {
  NewIterationPhase = 1,  // never entered; once it is spent no new iteration begins
  NormalPhase = 3,        // entered at every start
  VerifyPhase = 4,        // a later root move is verified as the new best
  CrisisPhase = 5,        // the first root move failed low, or the score dropped
  PhaseCount = 7,
};

struct TimeProfile {
  // What a phase may spend, in units of a move's share of the clock.
  std::array<double, PhaseCount> phaseFactor;
  // A thought that was begun on the opponent's clock is worth spending more on.
  double ponderFactor;
  int maxMovesToGo;       // moves to the time control are planned for up to this number
  int suddenDeath;        // moves planned for when the GUI names none: without an increment
  int withIncrement;      // and with one
  double incrementShare;  // of the increment that a move is given on top
  double reserveShare;    // of the clock, never planned with
  int overheadsAhead;     // later moves whose overhead is held back, at most half of what is left
  std::uint32_t minTime;  // ms, planned with even when less is left
};

inline constexpr TimeProfile ClassicTime = {
    .phaseFactor = {0.1, 0.65, 1.0, 2.0, 3.0, 4.0, 0.0},  // 0, 2 and 6: computed, never entered
    .ponderFactor = 1.4,
    .maxMovesToGo = 33,
    .suddenDeath = 33,
    .withIncrement = 33,
    .incrementShare = 1.0,
    .reserveShare = 0.0,
    .overheadsAhead = 0,
    .minTime = 100,
};

// Plays on what is left, however little: what must not be planned with is the overhead of each move
// and a small share of the clock.
inline constexpr TimeProfile ModernTime = {
    .phaseFactor = {0.1, 0.65, 1.0, 2.0, 3.0, 4.0, 0.0},
    .ponderFactor = 1.4,
    .maxMovesToGo = 33,
    .suddenDeath = 48,
    .withIncrement = 30,
    .incrementShare = 0.75,
    .reserveShare = 0.05,
    .overheadsAhead = 3,
    .minTime = 0,
};

}  // namespace quill
