// The one stream of diagnostic output that is not part of the protocol: standard output at start,
// nothing once the protocol has taken standard output over.
//
// Threads: the input thread and search threads write without a lock; each message is one write. The
// stream is an atomic pointer since the input thread may switch it off while a search runs.
#pragma once

#include <cstdio>

namespace quill {

// printf-style; adds no newline, does not flush. Nothing is written while the log is off.
[[gnu::format(printf, 1, 2)]] void log(const char* format, ...);

// Writes a time-stamped line "<tick count, ten digits>:<text1><text2>" and flushes. A missing text1
// reads as "?", a missing text2 as nothing.
void trace(const char* text1, const char* text2 = nullptr);

// From now on nothing is logged.
void logOff();
void flushLog();

// The stream, none when the log is off. A test may set its own.
std::FILE* logStream();
void setLogStream(std::FILE* stream);

}  // namespace quill
