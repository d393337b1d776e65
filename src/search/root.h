// Iterative deepening: the whole search of one "go", from the root move list to the best move.
//
// Depth 1, 2, 3 ... is searched with aspiration windows around the last iteration's scores; each
// iteration's best line is written back into the transposition table, so that the next one begins
// with it. All of it runs on the master's thread.
#pragma once

namespace quill {

struct ThreadPool;

// Forgets the last search: root record, the master's counters and killers; starts the clock and
// ages the transposition table. Input thread, while the pool is idle.
void prepareSearch(ThreadPool& pool);

// The search itself. Ends by calling the listener's searchFinished.
void think(ThreadPool& pool);

// True when the search has to end now: a limit is reached or a stop was asked for.
bool checkRootLimits(ThreadPool& pool);

}  // namespace quill
