// Names of files as paths, and where the program itself lies.
//
// A name is the text by which files are opened and which people read and write. The paths of the
// standard library are of wide characters under Windows, and it takes names for another encoding
// than the system does: only these functions translate between the two.
#pragma once

#include <filesystem>
#include <string>

namespace quill::platform {

// What the encoding can't express is replaced, so that no file has the name.
std::filesystem::path pathOf(const std::string& name);
std::string nameOf(const std::filesystem::path& path);

// The folder of the program's file; empty when the system does not tell it.
std::filesystem::path programFolder();

}  // namespace quill::platform
