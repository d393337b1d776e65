// The stream that the program was started with as standard error.
#pragma once

namespace quill::platform {

// Keeps that stream open until the program ends, wherever standard error is redirected afterwards:
// a parent that watches its end must not take the redirection for the program's death. Only the
// first call does something. On failure: nothing; the stream then closes with the redirection.
// Threads: the input thread.
void keepStandardErrorOpen();

// The name of the file that takes all and keeps nothing.
extern const char* const NullDevice;

}  // namespace quill::platform
