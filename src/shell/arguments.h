// The words that the program takes as its only argument, in place of a settings file.
#pragma once

#include <optional>

namespace quill {

// "--help" and "--version" tell about the program, "bench" runs the benchmark; nothing else is
// printed, and no engine is made. Returns the exit status, and none for any other word, which is
// the name of a settings file.
std::optional<int> runArgument(const char* word);

}  // namespace quill
