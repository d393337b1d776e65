#include "platform/paths.h"

#include <sys/auxv.h>

#include <system_error>

namespace quill::platform {

std::filesystem::path pathOf(const std::string& name) { return name; }

std::string nameOf(const std::filesystem::path& path) { return path.native(); }

// What the program was started as: unlike /proc, that is there in every root folder.
std::filesystem::path programFolder() {
  const auto* name = reinterpret_cast<const char*>(getauxval(AT_EXECFN));
  if (name == nullptr) return {};
  std::error_code error;
  return std::filesystem::canonical(name, error).parent_path();
}

}  // namespace quill::platform
