// What the standard library does not tell about files.
#pragma once

#include <cstdio>

namespace quill::platform {

// Whether the program may read the file or folder, or may write to it. Another program can change
// that at any time.
bool mayRead(const char* path);
bool mayWrite(const char* path);

// Makes an empty file. On failure: false, with errno set; a file that is there already (EEXIST)
// stays as it is.
bool createNewFile(const char* path);

// Whether a person sees what is written to the stream.
bool isTerminal(std::FILE* stream);

}  // namespace quill::platform
