// quill-book: makes opening books from games, shows what they hold and checks them.
#include <cinttypes>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "book/book_selector.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "quill_book/book_builder.h"
#include "quill_book/book_check.h"
#include "quill_book/command_line.h"
#include "quill_book/pgn_reader.h"

namespace quill {
namespace {

enum ExitStatus { Success = 0, Failure = 1, BadUsage = 2 };

// Says on standard error what is wrong with a file. Answers false.
bool complain(const std::string& path, const char* fault) {
  std::fprintf(stderr, "%s: %s\n", path.c_str(), fault);
  return false;
}

// On failure: false, with one line on standard error.
bool isReadable(const std::string& path) {
  std::error_code error;
  const auto type = std::filesystem::status(platform::pathOf(path), error).type();
  if (type == std::filesystem::file_type::not_found) return complain(path, "no such file");
  if (type == std::filesystem::file_type::directory) return complain(path, "is a directory");
  return platform::mayRead(path.c_str()) || complain(path, "can't be read");
}

// Whether the book may be written: only an old book gives way to it, never the games that it is
// made from, and no folder or device. It is asked first because reading the games may take long.
// On failure: false, with one line on standard error.
bool isWritable(const std::string& book, const std::vector<std::string>& games) {
  std::error_code error;
  const std::filesystem::path path = platform::pathOf(book);
  for (const std::string& file : games) {
    if (std::filesystem::equivalent(platform::pathOf(file), path, error)) {
      return complain(book, "not written, it is one of the files of games");
    }
  }
  const auto old = std::filesystem::status(path, error);
  if (std::filesystem::is_directory(old)) return complain(book, "is a directory");
  if (std::filesystem::exists(old) && !std::filesystem::is_regular_file(old)) {
    return complain(book, "is not a regular file");
  }
  const std::string folder = platform::nameOf(path.parent_path());
  return platform::mayWrite(folder.empty() ? "." : folder.c_str()) ||
         complain(book, "can't be written");
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
  const bool watched_ = platform::isTerminal(stderr);
  bool shown_ = false;
};

// The size of a book. As moves it tells the slots of the file, like the engine at its start, so
// that the two can be compared; the header takes those that hold no record.
std::string sizeText(std::uint64_t slots, std::uint64_t records, std::uint64_t positions) {
  return std::to_string(slots) + " moves (the header counts as " + std::to_string(slots - records) +
         ") in " + std::to_string(positions) + " positions";
}

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
  return file.eof() || complain(path, "can't be read");
}

int make(const CommandLine& line) {
  for (const std::string& file : line.files) {
    if (!isReadable(file)) return Failure;
  }
  if (!isWritable(line.output, line.files)) return Failure;
  BookBuilder builder(line.options);
  std::uint64_t skipped = 0;
  for (const std::string& file : line.files) {
    if (!addFile(file, builder, line.options.maxPly, skipped)) return Failure;
  }
  if (builder.gamesCounted() > 0 && !builder.write(line.output)) {
    complain(line.output, "can't be written");
    return Failure;
  }
  std::printf("%" PRIu64 " games used, %" PRIu64 " skipped, %" PRIu64 " without a result%s\n",
              builder.gamesCounted(), skipped, builder.gamesWithoutResult(),
              line.options.withUnfinished ? " among those used" : "");
  if (builder.gamesCounted() == 0) {
    complain(line.output, "not written, there is nothing to put into it");
    return Failure;
  }
  Book book;
  if (!book.open(line.output.c_str())) {
    complain(line.output, "can't be read back");
    return Failure;
  }
  std::printf(
      "%s: %s\n", line.output.c_str(),
      sizeText(book.recordCount(), builder.movesWritten(), builder.positionsWritten()).c_str());
  return Success;
}

int dump(const CommandLine& line) {
  Board board;
  if (!setFen(board, line.fen.c_str())) return Failure;
  Book book;
  if (!isReadable(line.files[0])) return Failure;
  if (!book.open(line.files[0].c_str())) {
    complain(line.files[0], "not a book");
    return Failure;
  }
  BookSelector(book, 0).printCandidates(Book::bookKey(board));
  return Success;
}

int check(const CommandLine& line) {
  if (!isReadable(line.files[0])) return Failure;
  const BookReport report = checkBook(line.files[0], stderr);
  if (!report.isSound()) return Failure;
  std::printf("%s: sound, %s, %" PRIu64 " of them reachable with %" PRIu64 " moves\n",
              line.files[0].c_str(),
              sizeText(report.slots, report.records, report.positions).c_str(),
              report.reachablePositions, report.playedMoves);
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
