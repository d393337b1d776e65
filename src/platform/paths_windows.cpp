#include "platform/paths.h"

#include <windows.h>

namespace quill::platform {

// The code page is UTF-8 if program_windows.rc has its way.

std::filesystem::path pathOf(const std::string& name) {
  const int length = static_cast<int>(name.size());
  std::wstring wide(name.size(), L'\0');  // never more characters than bytes
  wide.resize(static_cast<std::size_t>(
      MultiByteToWideChar(CP_ACP, 0, name.data(), length, wide.data(), length)));
  return wide;
}

std::string nameOf(const std::filesystem::path& path) {
  constexpr int MaxBytes = 4;  // for a character, or half of one, in any code page
  const std::wstring& wide = path.native();
  std::string name(wide.size() * MaxBytes, '\0');
  name.resize(static_cast<std::size_t>(
      WideCharToMultiByte(CP_ACP, 0, wide.data(), static_cast<int>(wide.size()), name.data(),
                          static_cast<int>(name.size()), nullptr, nullptr)));
  return name;
}

std::filesystem::path programFolder() {
  constexpr DWORD MaxLength = 32768;  // of any path
  wchar_t name[MaxLength];
  const DWORD length = GetModuleFileNameW(nullptr, name, MaxLength);
  if (length == 0 || length == MaxLength) return {};
  return std::filesystem::path(name, name + length).parent_path();
}

}  // namespace quill::platform
