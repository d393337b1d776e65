// Iterative deepening: the whole search of one "go", from the root move list to the best move.
//
// Depth 1, 2, 3 ... is searched with aspiration windows around the last iteration's scores; each
// iteration's best line is written back into the transposition table, so that the next one begins
// with it. All of it runs on the master's thread.
#pragma once

namespace quill {

struct SearchState;

// The search itself, of the position on the master's board. Ends by calling the listener's
// searchFinished. Requires: the state has been reset for this search.
void think(SearchState& state);

// Ends the search when a limit is reached. True when it has to end, for that or another reason.
bool checkRootLimits(SearchState& state);

}  // namespace quill
