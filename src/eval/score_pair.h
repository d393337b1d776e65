// An opening and an endgame value summed together: one addition updates both.
//
//   bits 16-31  opening value     bits 0-15  endgame value, signed
//
// A negative endgame half borrows one from the opening half; unpacking gives it back.
#pragma once

#include <cstdint>

namespace quill {

using ScorePair = std::int32_t;

constexpr ScorePair makePair(int opening, int endgame) { return opening * 65536 + endgame; }
constexpr int endgameOf(ScorePair pair) { return static_cast<std::int16_t>(pair); }
constexpr int openingOf(ScorePair pair) { return (pair >> 16) + ((pair >> 15) & 1); }

}  // namespace quill
