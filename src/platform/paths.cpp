#include "platform/paths.h"

#include <system_error>

#ifdef _WIN32
#include <windows.h>
#endif

namespace quill::platform {

std::filesystem::path programFolder() {
#ifdef _WIN32
  wchar_t name[32768];
  const DWORD length = GetModuleFileNameW(nullptr, name, 32768);
  if (length == 0 || length == 32768) return {};
  return std::filesystem::path(name, name + length).parent_path();
#else
  std::error_code error;
  return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
#endif
}

}  // namespace quill::platform
