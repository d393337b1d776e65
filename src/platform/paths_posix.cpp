#include "platform/paths.h"

#include <sys/auxv.h>

#include <system_error>

namespace quill::platform {

// What the program was started as: unlike /proc, that is there in every root folder.
std::filesystem::path programFolder() {
  const auto* name = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  if (name == nullptr) return {};
  std::error_code error;
  return std::filesystem::canonical(name, error).parent_path();
}

}  // namespace quill::platform
