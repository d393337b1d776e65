// The options that a GUI can set, as one table: how each is announced, its range and what it does.
#pragma once

#include <string>

namespace quill {

// The announcement of all options, in the order of the table.
std::string optionLines(int threadCount);

}  // namespace quill
