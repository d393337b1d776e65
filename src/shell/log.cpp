#include "shell/log.h"

#include <atomic>
#include <cstdarg>

#include "platform/clock.h"
#include "shell/output.h"

namespace quill {

namespace {

// Atomic because the input thread switches it off while a search thread may be about to write. The
// stream itself stays open, so a late line is harmless and relaxed access is enough.
std::atomic<std::FILE*> theStream{nullptr};
std::atomic<bool> isSet{false};  // until then the log is standard output

}  // namespace

void log(const char* format, ...) {
  std::FILE* stream = logStream();
  if (stream == nullptr) return;
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stream, format, arguments);
  va_end(arguments);
  requireOutput(stream);
}

void trace(const char* text1, const char* text2) {
  std::FILE* stream = logStream();
  if (stream == nullptr) return;
  std::fprintf(stream, "%010u:%s%s\n", platform::tickCountMs(), text1 == nullptr ? "?" : text1,
               text2 == nullptr ? "" : text2);
  std::fflush(stream);
}

void logOff() { setLogStream(nullptr); }

void flushLog() {
  std::FILE* stream = logStream();
  if (stream != nullptr) std::fflush(stream);
}

std::FILE* logStream() {
  return isSet.load(std::memory_order_acquire) ? theStream.load(std::memory_order_relaxed) : stdout;
}

void setLogStream(std::FILE* stream) {
  theStream.store(stream, std::memory_order_relaxed);
  isSet.store(true, std::memory_order_release);
}

}  // namespace quill
