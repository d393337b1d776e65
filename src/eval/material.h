// What the pieces are worth together, and the table that keeps it by material signature.
#pragma once

#include <array>
#include <cstdint>

#include "board/board.h"

namespace quill {

inline constexpr int FullScale = 1024;  // the whole score counts

// The material term, White's view, centipawns. When a side is ahead in points, scale is set to the
// share of the whole score that counts, in 1/1024: the fewer pawns it has, the harder it is to win.
int materialBalance(const Board& board, int& scale);

// What the two material signatures alone decide.
struct MaterialEntry {
  std::uint64_t signatures;  // White's, and Black's in the upper half
  std::int32_t balance;      // materialBalance, White's view
  std::int16_t scale;        // of the whole score, in 1/1024
  bool isEnding;             // endgameRules may have something to say
};

// The material that one thread has met lately. Most positions of a search share a few signatures.
class MaterialTable {
 public:
  // Starts with two bare kings in every place, so that none is ever empty.
  MaterialTable();

  // What is known of the board's material; computed if it has not been met lately.
  const MaterialEntry& find(const Board& board);

 private:
  static constexpr int IndexBits = 9;
  std::array<MaterialEntry, 1 << IndexBits> entries_;
};

}  // namespace quill
