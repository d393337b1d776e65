#include "platform/standard_streams.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>

namespace quill::platform {

namespace {

// Runs in the thread whose write found no reader; the stream may be any.
void noteMissingReader(int signal) {
  const int error = errno;
  pollfd output{STDOUT_FILENO, POLLOUT, 0};
  if (poll(&output, 1, 0) == 1 && (output.revents & (POLLERR | POLLHUP)) != 0) {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    raise(signal);  // comes through when this handler returns
  }
  errno = error;
}

}  // namespace

const char* const NullDevice = "/dev/null";

void guardStandardStreams() {
  struct sigaction action {};
  action.sa_handler = noteMissingReader;
  action.sa_flags = static_cast<int>(SA_RESTART);
  sigemptyset(&action.sa_mask);
  sigaction(SIGPIPE, &action, nullptr);
}

void useBinaryOutput() {}

void keepStandardErrorOpen() {
  // A second descriptor of the stream, which nobody writes to.
  [[maybe_unused]] static const int kept = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
}

}  // namespace quill::platform
