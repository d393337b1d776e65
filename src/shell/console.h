// The one loop over the input: reads lines and offers each to a fixed chain of handlers.
//
// The chain: the protocol's dispatcher, the named commands, the tests for typed moves and
// positions; what none takes is answered with "unknown command". A prompt is shown until the
// protocol takes over.
//
// Threads: the input thread only.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace quill {

struct Engine;

// Reads lines from a stream. Reading is buffered, but a line is handed out as soon as it is there.
class InputLines {
 public:
  // The longest piece of a line that a console reader takes at once, the newline included.
  static constexpr std::size_t ConsoleLimit = 16383;
  // The same for a GUI, whose lines hold whole games: a bound that only garbage reaches.
  static constexpr std::size_t ProtocolLimit = std::size_t{1} << 26;

  explicit InputLines(std::FILE* in) : in_(in) {}

  // The next line, or its next piece of at most limit characters, without the blanks before it and
  // the newline and blanks behind it. A zero byte ends the text. False at the end of the input.
  bool next(std::string& line, std::size_t limit);

 private:
  std::FILE* in_;
};

// Handles one line that next gave. False when it asks to end the program.
bool handleLine(Engine& engine, std::string line);

// Reads and handles lines until the end of the input or "quit". Returns the exit status.
int runConsole(Engine& engine, std::FILE* in);

}  // namespace quill
