#include "quill_book/command_line.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <string_view>

#include "board/fen.h"

namespace quill {

namespace {

constexpr char Help[] =
    R"(quill-book makes opening books from games, shows what they hold and checks them.

  quill-book make games.pgn [more.pgn ...] -o FILE [options]
  quill-book dump FILE [--fen FEN]
  quill-book check FILE

"quill-book make --help" tells more about make, and so on.
)";

constexpr char MakeHelp[] =
    R"(usage: quill-book make games.pgn [more.pgn ...] -o FILE [options]

Makes a book from the games. Those that can't be read or break the rules are named and skipped.

  -o FILE          the book; an old one is replaced as soon as the new one is complete
  --max-ply N      use the first N moves of each game, White's and Black's counted together (default
                   40, at most 1000); illegal or unreadable moves after these do no harm
  --min-games N    leave out moves played in fewer games (default 1)
  --elo            attach the average rating of the players who chose the move
  --unfinished     count games without a result ("*") as well, as draws; otherwise they are left out
)";

constexpr char DumpHelp[] =
    R"(usage: quill-book dump FILE [--fen FEN]

Shows the moves that the book holds for a position, and what the engine would play.

  --fen FEN        the position (default: the start of the game)
)";

constexpr char CheckHelp[] =
    R"(usage: quill-book check FILE

Verifies the layout of the book and the order of its records, and that the moves are legal wherever
the book leads from the start of the game.
)";

struct Command {
  std::string_view name;
  const char* help;
  std::vector<std::string_view> options;
};

const Command Commands[] = {
    {"make", MakeHelp, {"-o", "--max-ply", "--min-games", "--elo", "--unfinished"}},
    {"dump", DumpHelp, {"--fen"}},
    {"check", CheckHelp, {}}};

bool asksForHelp(const std::string& word) { return word == "-h" || word == "--help"; }

bool readNumber(const std::string& text, std::uint64_t most, std::uint64_t& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc{} && end == text.data() + text.size() && value >= 1 && value <= most;
}

// Sets an option that has a value. False when the value is bad.
bool setOption(const std::string& option, const std::string& value, CommandLine& line) {
  if (option == "-o") {
    line.output = value;
    return !value.empty() && value[0] != '-';  // the name was forgotten: an option comes next
  }
  if (option == "--fen") line.fen = value;
  if (option == "--min-games") return readNumber(value, UINT32_MAX, line.options.minGames);
  if (option == "--max-ply") {
    std::uint64_t number = 0;
    if (!readNumber(value, BookBuilder::MaxMaxPly, number)) return false;
    line.options.maxPly = static_cast<int>(number);
  }
  return true;
}

// What is missing or too much, empty if nothing is.
std::string checkFiles(const CommandLine& line) {
  if (line.command != "make") return line.files.size() == 1 ? "" : line.command + " needs one book";
  if (line.files.empty()) return "make needs a file of games";
  return line.output.empty() ? "make needs -o and the name of the book" : "";
}

}  // namespace

std::string readCommandLine(const std::vector<std::string>& words, CommandLine& line) {
  line.fen = StartPosition;
  if (words.empty()) return "no command";
  if (asksForHelp(words[0])) {
    line.help = Help;
    return {};
  }
  const auto* command = std::find_if(std::begin(Commands), std::end(Commands),
                                     [&](const Command& c) { return c.name == words[0]; });
  if (command == std::end(Commands)) return "unknown command: " + words[0];
  line.command = words[0];
  for (std::size_t i = 1; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (asksForHelp(word)) {
      line.help = command->help;
      return {};
    }
    const auto& options = command->options;
    if (word.size() < 2 || word[0] != '-') {
      line.files.push_back(word);
    } else if (std::find(options.begin(), options.end(), word) == options.end()) {
      return "unknown option: " + word;
    } else if (word == "--elo") {
      line.options.withElo = true;
    } else if (word == "--unfinished") {
      line.options.withUnfinished = true;
    } else if (++i == words.size()) {
      return word + " needs a value";
    } else if (!setOption(word, words[i], line)) {
      return "bad " + word + ": " + words[i];
    }
  }
  return checkFiles(line);
}

}  // namespace quill
