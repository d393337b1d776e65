// The quiescence search: it resolves captures, checks and threats, and trusts the static evaluation
// of the quiet positions that it comes to.
#pragma once

namespace quill {

struct Worker;

// Searches captures, in its first plies (checkDepth > 0) quiet checks too, all moves under a
// concrete threat, evasions in check. Fail-soft; flags are NodeFlags. Table entries carry
// checkDepth - 2.
int qsearch(Worker& worker, int ply, int checkDepth, int alpha, int beta, unsigned flags);

}  // namespace quill
