#include "shell/console.h"

#include <cstring>
#include <utility>

#include "shell/board_commands.h"
#include "shell/engine.h"
#include "shell/eval_command.h"
#include "shell/output.h"
#include "shell/search_commands.h"

namespace quill {

namespace {

struct Command {
  const char* name;
  const char* arguments;                          // as "help" shows them
  void (*run)(Engine& engine, const char* rest);  // nullptr: the program ends
  bool takesTheEngine;  // uses what a running search uses: the board, the table or the clock
  bool standsAlone;     // a line with more words is not this command
  const char* effect;   // as "help" tells it
};

void helpCommand(Engine& engine, const char* rest);

// clang-format off
constexpr Command Commands[] = {
    // name    arguments  function      engine  alone  effect
    {"help",   "",        helpCommand,     false, true,  "lists the commands"},
    {"d",      "",        showCommand,     true,  true,  "shows the board"},
    {"new",    "",        newCommand,      true,  true,  "sets the start position"},
    {"fen",    "[FEN]",   fenCommand,      true,  false, "sets the position, if one is given, and shows the board"},
    {"%",      "",        passCommand,     true,  false, "passes the turn"},
    {"undo",   "",        undoCommand,     true,  true,  "takes back the last move that was typed"},
    {"moves",  "",        movesCommand,    true,  true,  "lists the legal moves"},
    {"eval",   "",        evalCommand,     true,  true,  "shows the evaluation term by term"},
    {"perft",  "[depth]", perftCommand,    true,  false, "counts the move sequences of that length"},
    {"divide", "[depth]", divideCommand,   true,  false, "counts them for each first move"},
    {"book",   "",        bookCommand,     true,  false, "lists what the opening book holds for the position"},
    {"g",      "[tt]",    searchCommand,   true,  false, "searches; with tt it keeps what earlier searches have found"},
    {"mt",     "[seconds]", moveTimeCommand, false, false, "sets the time of a search and shows it"},
    {"bench",  "",        benchCommand,    true,  true,  "searches fixed positions and tells its speed"},
    {"quit",   "",        nullptr,         false, false, "ends the program"},
};
// clang-format on

void helpCommand(Engine& /*engine*/, const char* /*rest*/) {
  const auto print = [](const std::string& usage, const char* effect) {
    std::printf("%-17s %s\n", usage.c_str(), effect);
  };
  for (const Command& command : Commands)
    print(std::string(command.name) + ' ' + command.arguments, command.effect);
  print("a move", "plays it: e2e4, Nf3, exd5, O-O");
  print("a FEN text", "sets the position");
  print("an empty line", "shows the board");
  std::printf("The commands of the protocol (uci, position, go, stop, ...) work here as well.\n");
}

// Whether a running search forbids the command; if so, says so on standard error. Waits for a
// search that has just sent its move.
bool refuseWhileSearching(Engine& engine, const char* command) {
  if (engine.uci.isSearching()) {
    std::fprintf(stderr, "%s: a search is running\n", command);
    return true;
  }
  engine.pool.waitIdle();
  return false;
}

const Command* findCommand(const char* word, const char* rest) {
  for (const Command& command : Commands) {
    if (std::strcmp(word, command.name) != 0) continue;
    if (!command.standsAlone || *rest == '\0') return &command;
  }
  return nullptr;
}

bool runTypedLine(Engine& engine, const char* word, const char* rest) {
  const bool isMove = isMoveLine(word, rest);
  if (!isMove && !isPositionLine(word)) return false;
  if (refuseWhileSearching(engine, word)) return true;
  if (isMove) {
    playTypedMove(engine, word);
  } else {
    setTypedPosition(engine, word, rest);
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
  if (engine.uci.profile().dropsCarriageReturn) {
    line.erase(line.find_last_not_of(" \r") + 1);
  }
  if (line.empty()) {
    if (!engine.uci.uciMode() && !refuseWhileSearching(engine, "board")) fenCommand(engine, "");
    return true;
  }
  const char* const word = line.c_str();
  const char* rest = "";
  if (const std::size_t blank = line.find(' '); blank != std::string::npos) {
    line[blank] = '\0';
    rest = word + blank + 1;
  }

  if (engine.uci.dispatch(word, rest)) return true;
  if (const Command* const command = findCommand(word, rest)) {
    if (command->run == nullptr) return false;
    if (!command->takesTheEngine || !refuseWhileSearching(engine, word)) command->run(engine, rest);
    return true;
  }
  if (runTypedLine(engine, word, rest)) return true;
  std::printf("unknown command: '%s'%s\n", word,
              engine.uci.profile().hintsAtHelp ? " (help lists the commands)" : "");
  return true;
}

int runConsole(Engine& engine, std::FILE* in) {
  InputLines input(in);
  std::string line;
  while (true) {
    const bool uciMode = engine.uci.uciMode();
    if (!uciMode) std::fputs("% ", stdout);
    requireOutput(stdout);
    const bool isThere =
        input.next(line, uciMode ? InputLines::ProtocolLimit : InputLines::ConsoleLimit);
    if (!isThere || !handleLine(engine, std::move(line))) break;
  }
  engine.uci.finish();
  requireOutput(stdout);
  return 0;
}

}  // namespace quill
