// An opening and an endgame value summed together: one addition updates both.
//
//   bits   field
//   0-15   endgame value, signed
//   16-31  opening value, signed, one too low when the endgame value is negative
#pragma once

#include <cstdint>

namespace quill {

using ScorePair = std::int32_t;

constexpr ScorePair makePair(int opening, int endgame) { return opening * 65536 + endgame; }
constexpr int endgameOf(ScorePair pair) { return static_cast<std::int16_t>(pair); }
constexpr int openingOf(ScorePair pair) { return (pair >> 16) + ((pair >> 15) & 1); }

}  // namespace quill
