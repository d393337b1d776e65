#include "shell/console.h"

#include <cstring>
#include <utility>

#include "shell/board_commands.h"
#include "shell/engine.h"
#include "shell/search_commands.h"

namespace quill {

namespace {

struct Command {
  const char* name;
  void (*run)(Engine& engine, const char* rest);
  bool takesTheEngine;  // uses what a running search uses: the board, the table or the clock
};

constexpr Command Commands[] = {
    {"book", bookCommand, true},     {"fen", fenCommand, true},     {"%", passCommand, true},
    {"divide", divideCommand, true}, {"perft", perftCommand, true}, {"g", searchCommand, true},
    {"mt", moveTimeCommand, false},
};

// Whether a running search forbids the command; if so, says so on standard error. Waits for a
// search that has just sent its move.
bool isRefused(Engine& engine, const char* command) {
  if (engine.uci.isSearching()) {
    std::fprintf(stderr, "%s: a search is running\n", command);
    return true;
  }
  engine.pool.waitIdle();
  return false;
}

bool runNamedCommand(Engine& engine, const char* word, const char* rest) {
  for (const Command& command : Commands) {
    if (std::strcmp(word, command.name) != 0) continue;
    if (!command.takesTheEngine || !isRefused(engine, word)) command.run(engine, rest);
    return true;
  }
  return false;
}

bool runTypedLine(Engine& engine, const char* word, const char* rest) {
  const bool isMove = isMoveLine(word, rest);
  if (!isMove && !isPositionLine(word)) return false;
  if (isRefused(engine, word)) return true;
  if (isMove) {
    playTypedMove(engine.pool.board(), word);
  } else {
    setTypedPosition(engine.pool.board(), word, rest);
  }
  return true;
}

}  // namespace

bool InputLines::next(std::string& line, std::size_t limit) {
  line.clear();
  int c = EOF;
  while (line.size() < limit && (c = std::getc(in_)) != EOF) {
    line += static_cast<char>(c);
    if (c == '\n') break;
  }
  if (line.empty()) return false;

  line.resize(std::strlen(line.c_str()));
  line.erase(0, line.find_first_not_of(' '));
  const std::size_t newline = line.find_last_not_of('\n');
  line.erase(newline == std::string::npos ? 0 : newline + 1);
  const std::size_t blank = line.find_last_not_of(' ');
  line.erase(blank == std::string::npos ? 0 : blank + 1);
  return true;
}

bool handleLine(Engine& engine, std::string line) {
  if (line.empty()) {
    if (!engine.uci.uciMode() && !isRefused(engine, "board")) fenCommand(engine, "");
    return true;
  }
  const char* const word = line.c_str();
  const char* rest = "";
  if (const std::size_t blank = line.find(' '); blank != std::string::npos) {
    line[blank] = '\0';
    rest = word + blank + 1;
  }

  if (engine.uci.dispatch(word, rest)) return true;
  if (std::strcmp(word, "quit") == 0) return false;
  if (runNamedCommand(engine, word, rest)) return true;
  if (runTypedLine(engine, word, rest)) return true;
  std::printf("unknown command: '%s'\n", word);
  return true;
}

int runConsole(Engine& engine, std::FILE* in) {
  InputLines input(in);
  std::string line;
  while (true) {
    const bool uciMode = engine.uci.uciMode();
    if (!uciMode) std::fputs("% ", stdout);
    const bool isThere =
        input.next(line, uciMode ? InputLines::ProtocolLimit : InputLines::ConsoleLimit);
    if (!isThere || !handleLine(engine, std::move(line))) break;
  }
  engine.uci.finish();
  return 0;
}

}  // namespace quill
