#include "platform/files.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

namespace quill::platform {

namespace {

enum AccessMode { Write = 2, Read = 4 };

}  // namespace

bool mayRead(const char* path) { return _access(path, Read) == 0; }

bool mayWrite(const char* path) { return _access(path, Write) == 0; }

bool createNewFile(const char* path) {
  const int file = _open(path, _O_WRONLY | _O_CREAT | _O_EXCL, _S_IREAD | _S_IWRITE);
  return file >= 0 && _close(file) == 0;
}

bool isTerminal(std::FILE* stream) { return _isatty(_fileno(stream)) != 0; }

}  // namespace quill::platform
