// Whether output still goes somewhere.
#pragma once

#include <cstdio>

namespace quill {

// Ends the program with one line on standard error and status -4 when the stream could not take
// something that was written to it, as on a full disk. Nobody would ever see the moves of an engine
// that went on.
// Threads: any.
void requireOutput(std::FILE* stream);

}  // namespace quill
