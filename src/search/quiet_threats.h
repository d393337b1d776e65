// What the quiet moves of a node threaten: a move that threatens is worth a search even when the
// side is far behind, while the others may be pruned.
#pragma once

#include "board/board.h"

namespace quill {

enum ThreatFlag : int { NoThreat = 0, Threatens = 1, MayDiscoverCheck = 2 };

// Writes one ThreatFlag for each move. The further the evaluation is behind, the dearer must be
// what is threatened; margin is beta - evaluation in centipawns. Requires: valid attack
// information, not in check.
void flagQuietThreats(const Board& board, const Move* first, const Move* end, int* flags,
                      int margin);

}  // namespace quill
