#include "platform/paths.h"

#include <windows.h>

namespace quill::platform {

std::filesystem::path programFolder() {
  constexpr DWORD MaxLength = 32768;  // of any path
  wchar_t name[MaxLength];
  const DWORD length = GetModuleFileNameW(nullptr, name, MaxLength);
  if (length == 0 || length == MaxLength) return {};
  return std::filesystem::path(name, name + length).parent_path();
}

}  // namespace quill::platform
