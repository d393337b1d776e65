// quill-book: makes opening books from games, shows what they hold and checks them.
#include <unistd.h>

#include <cinttypes>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "book/book_selector.h"
#include "quill_book/book_builder.h"
#include "quill_book/book_check.h"
#include "quill_book/command_line.h"
#include "quill_book/pgn_reader.h"

namespace quill {
namespace {

enum ExitStatus { Success = 0, Failure = 1, BadUsage = 2 };

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

int make(const CommandLine& line) {
  BookBuilder builder(line.options);
  std::uint64_t skipped = 0;
  for (const std::string& file : line.files) {
    if (!addFile(file, builder, line.options.maxPly, skipped)) return Failure;
  }
  if (builder.gamesCounted() > 0 && !builder.write(line.output)) {
    std::fprintf(stderr, "%s: can't be written\n", line.output.c_str());
    return Failure;
  }
  std::printf("%" PRIu64 " games used, %" PRIu64 " skipped, %" PRIu64 " without a result\n",
              builder.gamesCounted(), skipped, builder.gamesWithoutResult());
  if (builder.gamesCounted() == 0) {
    std::fprintf(stderr, "%s: not written, there is nothing to put into it\n", line.output.c_str());
    return Failure;
  }
  std::printf("%s: %" PRIu64 " moves in %" PRIu64 " positions\n", line.output.c_str(),
              builder.movesWritten(), builder.positionsWritten());
  return Success;
}

int dump(const CommandLine& line) {
  Board board;
  if (!setFen(board, line.fen.c_str())) return Failure;
  Book book;
  if (!book.open(line.files[0].c_str())) {
    std::fprintf(stderr, "%s: not a book\n", line.files[0].c_str());
    return Failure;
  }
  BookSelector(book, 0).printCandidates(getFen(board).text());
  return Success;
}

int check(const CommandLine& line) {
  const BookReport report = checkBook(line.files[0], stderr);
  if (!report.isSound()) return Failure;
  std::printf("%s: sound, %" PRIu64 " records, %" PRIu64 " positions, %" PRIu64
              " of them reachable with %" PRIu64 " moves\n",
              line.files[0].c_str(), report.records, report.positions, report.reachablePositions,
              report.playedMoves);
  return Success;
}

int run(const std::vector<std::string>& words) {
  CommandLine line;
  const std::string complaint = readCommandLine(words, line);
  if (!complaint.empty()) {
    std::fprintf(stderr, "quill-book: %s (try: quill-book %s%s--help)\n", complaint.c_str(),
                 line.command.c_str(), line.command.empty() ? "" : " ");
    return BadUsage;
  }
  if (line.help != nullptr) {
    std::fputs(line.help, stdout);
    return Success;
  }
  if (line.command == "make") return make(line);
  return line.command == "dump" ? dump(line) : check(line);
}

}  // namespace
}  // namespace quill

int main(int argc, char** argv) {
  quill::initTables();
  quill::initZobrist();
  return quill::run({argv + 1, argv + argc});
}
