// Where the program itself lies.
#pragma once

#include <filesystem>

namespace quill::platform {

// The folder of the program's file; empty when the system does not tell it.
std::filesystem::path programFolder();

}  // namespace quill::platform
