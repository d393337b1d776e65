#include "platform/standard_error.h"

#ifdef _WIN32
#include <io.h>
#else
#include <fcntl.h>
#include <unistd.h>
#endif

namespace quill::platform {

namespace {

// A second descriptor of the stream, which nobody writes to.
int duplicate() {
#ifdef _WIN32
  return _dup(2);
#else
  return fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
#endif
}

}  // namespace

#ifdef _WIN32
const char* const NullDevice = "NUL";
#else
const char* const NullDevice = "/dev/null";
#endif

void keepStandardErrorOpen() { [[maybe_unused]] static const int kept = duplicate(); }

}  // namespace quill::platform
