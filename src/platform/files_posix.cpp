#include "platform/files.h"

#include <fcntl.h>
#include <unistd.h>

namespace quill::platform {

bool mayRead(const char* path) { return access(path, R_OK) == 0; }

bool mayWrite(const char* path) { return access(path, W_OK) == 0; }

bool createNewFile(const char* path) {
  const int file = open(path, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
  return file >= 0 && close(file) == 0;
}

bool isTerminal(std::FILE* stream) { return isatty(fileno(stream)) != 0; }

}  // namespace quill::platform
