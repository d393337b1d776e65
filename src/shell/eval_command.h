// The console command "eval".
#pragma once

namespace quill {

struct Engine;

// Shows the evaluation of the position term by term and step by step, as the weights in force give
// it, without the caches. The last line is the result, from the view of the side to move.
// Requires: no search runs.
void evalCommand(Engine& engine, const char* rest);

}  // namespace quill
