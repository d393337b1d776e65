// The command line of quill-book: its commands, their options, and what --help shows.
#pragma once

#include <string>
#include <vector>

#include "quill_book/book_builder.h"

namespace quill {

struct CommandLine {
  std::string command;         // "make", "dump" or "check"; empty if it has not come so far
  const char* help = nullptr;  // if set, this text is wanted and nothing else
  std::vector<std::string> files;
  std::string output;  // of make
  std::string fen;     // of dump; the start position unless given
  BookOptions options;
};

// Reads the words that follow the program's name. What is wrong with them, empty if nothing is.
std::string readCommandLine(const std::vector<std::string>& words, CommandLine& line);

}  // namespace quill
