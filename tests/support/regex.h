// Matchers by regular expression. GoogleTest's own understand less on Windows.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

namespace quill::test {

// Extended POSIX expressions; a dot stands for any character.
MATCHER_P(MatchesRegex, pattern, "matches " + testing::PrintToString(pattern)) {
  return std::regex_match(std::string(arg), std::regex(pattern, std::regex::extended));
}

MATCHER_P(ContainsRegex, pattern, "contains " + testing::PrintToString(pattern)) {
  return std::regex_search(std::string(arg), std::regex(pattern, std::regex::extended));
}

}  // namespace quill::test
