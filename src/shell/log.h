// The stream of diagnostic output that is not part of the protocol: standard output at first,
// nothing once the protocol has taken over standard output.
//
// Threads: the input thread and search threads write without a lock; each message is one write. The
// stream is an atomic pointer, because the input thread may switch it off while a search runs.
#pragma once

#include <cstdio>

namespace quill {

// Like printf; adds no newline and does not flush. Writes nothing while the log is off.
[[gnu::format(printf, 1, 2)]] void log(const char* format, ...);

// Writes a time-stamped line "<tick count, ten digits>:<text1><text2>" and flushes. A null text1 is
// written as "?", a null text2 as nothing.
void trace(const char* text1, const char* text2 = nullptr);

// From now on nothing is logged.
void logOff();
void flushLog();

// The stream, nullptr when the log is off. A test may set its own.
std::FILE* logStream();
void setLogStream(std::FILE* stream);

}  // namespace quill
