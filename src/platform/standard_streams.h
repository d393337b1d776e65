// The streams that the program was started with.
#pragma once

namespace quill::platform {

// Once nobody reads standard output, the next write to it ends the program by the system's signal,
// even if the parent had that ignored; that nobody reads standard error does no harm. To be called
// before anything is written.
// Windows: nothing; there is no such signal, and a write to what nobody reads fails.
void guardStandardStreams();

// Has standard output and standard error take bytes as they are: Windows would put a carriage
// return before each line feed. Standard input stays as the system gives it: there a line's end, a
// carriage return and a line feed on Windows, reads as a line feed. To be called before anything is
// written.
void useBinaryOutput();

// Keeps the first standard error open until the program ends, wherever standard error is redirected
// afterwards: a parent that watches its end must not take the redirection for the program's death.
// Only the first call does something. On failure: nothing; the stream then closes with the
// redirection.
// Threads: the input thread.
void keepStandardErrorOpen();

// The name of the file that takes all and keeps nothing.
extern const char* const NullDevice;

}  // namespace quill::platform
