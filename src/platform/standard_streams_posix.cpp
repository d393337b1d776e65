#include "platform/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace quill::platform {

const char* const NullDevice = "/dev/null";

void useBinaryOutput() {}

void keepStandardErrorOpen() {
  // A second descriptor of the stream, which nobody writes to.
  [[maybe_unused]] static const int kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
}

}  // namespace quill::platform
