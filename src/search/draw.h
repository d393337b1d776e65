// Draws by the rules of chess, as the search takes them.
#pragma once

namespace quill {

struct Worker;

// Whether the position counts as drawn before anything else is looked at: the side to move can go
// back to a position that the opponent has gone back to already (at beta <= 0), fifty moves have
// passed, there is too little material, or the position is a repetition. Sets pv[ply] to the move
// back in the first case.
bool isDrawByRule(Worker& worker, int ply, int beta);

}  // namespace quill
