#include "shell/output.h"

#include <cstdlib>

namespace quill {

namespace {

constexpr int OutputLost = -4;  // exit status

}  // namespace

void requireOutput(std::FILE* stream) {
  if (std::ferror(stream) == 0) return;
  std::fprintf(stderr, "Cannot go on: standard output takes no more\n");
  // A search may still run: the process ends under it.
  std::_Exit(OutputLost);
}

}  // namespace quill
