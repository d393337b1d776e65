// The order in which the search tries moves. There is no history table: quiet moves go by killers
// and a few static features.
#pragma once

#include "board/board.h"
#include "search/killers.h"

namespace quill {

// Piece values by type that moves are ordered by.
inline constexpr int OrderValue[8] = {0, 1, 3, 3, 5, 10, 99, 0};

// Brings the `places` moves with the highest scores to the front by selection; of equal scores the
// earlier move comes first. The other moves stay where the exchanges left them. Scores move with
// their moves. Requires: at most MaxMoves moves, scores within +-2^22.
void sortMoves(Move* moves, int* scores, int count, int places);

// Sorts the best eight moves of a side that is not in check to the front. Returns first + as many
// as there are good moves (hash move, killers of this ply, sound captures and promotions, pawns
// arriving on their last two ranks), wherever those are: the moves before that place are the early
// ones, which are never pruned or reduced.
// Requires: valid attack information; at most MaxMoves moves.
Move* orderMoves(const Board& board, const KillerTable& killers, int ply, Move* first, Move* end,
                 Move hashMove);

// Sorts all evasions of a side in check.
void orderEvasions(const Board& board, Move* first, Move* end, Move hashMove);

}  // namespace quill
