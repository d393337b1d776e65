// Killer moves: the last two quiet moves that proved best at a ply, tried early in its other nodes.
#pragma once

#include <array>

#include "board/move.h"
#include "search/params.h"

namespace quill {

// [ply][slot], slot 0 the most recent; without the mark, 0 when empty.
using KillerTable = std::array<std::array<Move, 2>, MaxSearchPly>;

// Remembers the move. Requires: a quiet move, made by a side that was not in check.
inline void updateKillers(KillerTable& killers, int ply, Move move) {
  auto& [recent, older] = killers[static_cast<unsigned>(ply)];
  if (isSameMove(move, recent)) return;
  older = recent;
  recent = withoutMark(move);
}

}  // namespace quill
