// quill-book: makes opening books from games, shows what they hold and checks them.
#include <unistd.h>

#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "book/book_selector.h"
#include "quill_book/book_builder.h"
#include "quill_book/book_check.h"
#include "quill_book/pgn_reader.h"

namespace quill {
namespace {

constexpr char Usage[] =
    "usage:\n"
    "  quill-book make games.pgn [more.pgn ...] -o FILE [--max-ply N] [--min-games N] [--elo]\n"
    "      Makes a book from the games. --max-ply: moves of each game that are used (40);\n"
    "      --min-games: leave out moves played in fewer games (1); --elo: attach the average\n"
    "      rating of the players who chose the move.\n"
    "  quill-book dump FILE [--fen FEN]\n"
    "      Shows the moves that the book holds for a position (the start position).\n"
    "  quill-book check FILE\n"
    "      Verifies the layout and order of the records, and that the moves are legal wherever\n"
    "      the book leads from the start position.\n";

enum ExitStatus { Success = 0, Failure = 1, BadUsage = 2 };

int usage(const std::string& complaint) {
  std::fprintf(stderr, "quill-book: %s\n%s", complaint.c_str(), Usage);
  return BadUsage;
}

struct Arguments {
  std::vector<std::string> files;
  std::string output;
  std::string fen = StartPosition;
  BookOptions options;
};

bool readNumber(const std::string& text, std::uint64_t least, std::uint64_t most,
                std::uint64_t& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc{} && end == text.data() + text.size() && value >= least &&
         value <= most;
}

// What is wrong with the arguments, empty if nothing is.
std::string readArguments(const std::vector<std::string>& words, Arguments& arguments) {
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string& word = words[i];
    if (word == "--elo") {
      arguments.options.withElo = true;
      continue;
    }
    if (word.size() < 2 || word[0] != '-') {
      arguments.files.push_back(word);
      continue;
    }
    if (i + 1 == words.size()) return word + " needs a value";
    const std::string& value = words[++i];
    std::uint64_t number = 0;
    if (word == "-o") {
      arguments.output = value;
    } else if (word == "--fen") {
      arguments.fen = value;
    } else if (word == "--max-ply") {
      if (!readNumber(value, 1, BookBuilder::MaxMaxPly, number)) return "bad --max-ply: " + value;
      arguments.options.maxPly = static_cast<int>(number);
    } else if (word == "--min-games") {
      if (!readNumber(value, 1, UINT32_MAX, number)) return "bad --min-games: " + value;
      arguments.options.minGames = number;
    } else {
      return "unknown option: " + word;
    }
  }
  return {};
}

// A line on standard error that is rewritten as the work goes on, if standard error is a terminal.
class Progress {
 public:
  void show(const std::string& file, std::uint64_t games, std::uint64_t bytes) {
    if (!watched_ || games % GamesPerUpdate != 0) return;
    std::fprintf(stderr, "\r%s: %" PRIu64 " games, %" PRIu64 " MB ", file.c_str(), games,
                 bytes >> 20);
    shown_ = true;
  }
  void clear() {
    if (shown_) std::fputs("\r\x1B[K", stderr);
    shown_ = false;
  }

 private:
  static constexpr std::uint64_t GamesPerUpdate = 1000;
  const bool watched_ = isatty(STDERR_FILENO) != 0;
  bool shown_ = false;
};

// Counts the games of one file and adds the number of those that can't be used to skipped.
// On failure: false, with one line on standard error, when the file can't be read.
bool addFile(const std::string& path, BookBuilder& builder, int maxPly, std::uint64_t& skipped) {
  std::ifstream file(path, std::ios::binary);
  PgnReader reader(file, maxPly);
  Progress progress;
  PgnGame game;
  for (std::uint64_t games = 1; reader.next(game); ++games) {
    progress.show(path, games, reader.bytes());
    if (const auto error = builder.add(game)) {
      progress.clear();
      ++skipped;
      std::fprintf(stderr, "%s:%" PRIu64 ": %s\n", path.c_str(), error->line,
                   error->reason.c_str());
    }
  }
  progress.clear();
  // Reading stops at the end of the file; if it stopped elsewhere, the file has an error.
  if (file.eof()) return true;
  std::fprintf(stderr, "%s: can't be read\n", path.c_str());
  return false;
}

int make(const Arguments& arguments) {
  if (arguments.files.empty()) return usage("make needs a file of games");
  if (arguments.output.empty()) return usage("make needs -o and the name of the book");
  BookBuilder builder(arguments.options);
  std::uint64_t skipped = 0;
  for (const std::string& file : arguments.files) {
    if (!addFile(file, builder, arguments.options.maxPly, skipped)) return Failure;
  }
  if (builder.gamesCounted() > 0 && !builder.write(arguments.output)) {
    std::fprintf(stderr, "%s: can't be written\n", arguments.output.c_str());
    return Failure;
  }
  std::printf("%" PRIu64 " games used, %" PRIu64 " skipped, %" PRIu64 " without a result\n",
              builder.gamesCounted(), skipped, builder.gamesWithoutResult());
  if (builder.gamesCounted() == 0) {
    std::fprintf(stderr, "%s: not written, there is nothing to put into it\n",
                 arguments.output.c_str());
    return Failure;
  }
  std::printf("%s: %" PRIu64 " moves in %" PRIu64 " positions\n", arguments.output.c_str(),
              builder.movesWritten(), builder.positionsWritten());
  return Success;
}

int dump(const Arguments& arguments) {
  if (arguments.files.size() != 1) return usage("dump needs one book");
  Board board;
  if (!setFen(board, arguments.fen.c_str())) return Failure;
  Book book;
  if (!book.open(arguments.files[0].c_str())) {
    std::fprintf(stderr, "%s: not a book\n", arguments.files[0].c_str());
    return Failure;
  }
  BookSelector(book, 0).printCandidates(getFen(board).text());
  return Success;
}

int check(const Arguments& arguments) {
  if (arguments.files.size() != 1) return usage("check needs one book");
  const BookReport report = checkBook(arguments.files[0], stderr);
  if (!report.isSound()) return Failure;
  std::printf("%s: sound, %" PRIu64 " records, %" PRIu64 " positions, %" PRIu64
              " of them reachable with %" PRIu64 " moves\n",
              arguments.files[0].c_str(), report.records, report.positions,
              report.reachablePositions, report.playedMoves);
  return Success;
}

int run(const std::vector<std::string>& words) {
  if (words.empty()) return usage("no command");
  Arguments arguments;
  const std::string complaint = readArguments({words.begin() + 1, words.end()}, arguments);
  if (!complaint.empty()) return usage(complaint);
  if (words[0] == "make") return make(arguments);
  if (words[0] == "dump") return dump(arguments);
  if (words[0] == "check") return check(arguments);
  return usage("unknown command: " + words[0]);
}

}  // namespace
}  // namespace quill

int main(int argc, char** argv) {
  quill::initTables();
  quill::initZobrist();
  return quill::run({argv + 1, argv + argc});
}
