// The loop over the input: reads lines and offers each one to a fixed chain of handlers.
//
// The chain: the protocol's dispatcher, the named commands, typed moves and positions. A line that
// none of them takes is answered with "unknown command". A prompt is shown as long as the protocol
// has not taken over.
//
// Threads: the input thread only.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace quill {

struct Engine;

// Reads lines from a stream. Reading is buffered, but each line is returned as soon as it is there.
class InputLines {
 public:
  // The longest piece of a line that the console takes at once, the newline included.
  static constexpr std::size_t ConsoleLimit = 16383;
  // The same for a GUI, whose lines hold whole games: only garbage is longer.
  static constexpr std::size_t ProtocolLimit = std::size_t{1} << 26;

  explicit InputLines(std::FILE* in) : in_(in) {}

  // The next line, or its next piece of at most limit characters, without leading blanks, newline
  // and trailing blanks. A zero byte ends the text. False at the end of the input.
  bool next(std::string& line, std::size_t limit);

 private:
  std::FILE* in_;
};

// Handles a line from InputLines::next. False when the program is to end.
bool handleLine(Engine& engine, std::string line);

// Reads and handles lines until the end of the input or "quit". Returns the exit status.
int runConsole(Engine& engine, std::FILE* in);

}  // namespace quill
