#include "platform/standard_streams.h"

#include <fcntl.h>
#include <io.h>

#include <cstdio>

namespace quill::platform {

const char* const NullDevice = "NUL";

void guardStandardStreams() {}

void useBinaryOutput() {
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
}

void keepStandardErrorOpen() {
  // A second descriptor of the stream, which nobody writes to.
  [[maybe_unused]] static const int kept = _dup(_fileno(stderr));
}

}  // namespace quill::platform
