#include "quill_book/book_check.h"

#include <bitset>
#include <fstream>
#include <unordered_set>
#include <vector>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/notation.h"
#include "book/book.h"

namespace quill {

namespace {

class BookChecker {
 public:
  BookChecker(const std::string& path, std::FILE* messages) : path_(path), messages_(messages) {}

  BookReport run() {
    if (!book_.open(path_.c_str())) {
      fail("not a book: no regular file, or a header that contradicts itself");
    } else {
      report_.slots = book_.recordCount();
      checkRecords();
      if (report_.isSound()) walk();
    }
    return report_;
  }

 private:
  void fail(const std::string& reason) {
    ++report_.faults;
    std::fprintf(messages_, "%s: %s\n", path_.c_str(), reason.c_str());
  }

  // Reads record by record up to the first fault. The engine uses binary search, so one record out
  // of order can hide any number of others.
  void checkRecords() {
    const BookHeader& header = book_.header();
    std::ifstream file(path_, std::ios::binary);
    file.seekg(header.headerSize);
    std::vector<unsigned char> record(header.recordSize);
    while (readRecord(file, record)) {
      const std::string reason = faultOf(record);
      if (!reason.empty()) {
        fail("record " + std::to_string(report_.records) + ": " + reason);
        return;
      }
      ++report_.records;
    }
    if (file.gcount() != 0) fail(std::to_string(file.gcount()) + " bytes behind the last record");
  }

  static bool readRecord(std::ifstream& file, std::vector<unsigned char>& record) {
    file.read(reinterpret_cast<char*>(record.data()), static_cast<std::streamsize>(record.size()));
    return file.gcount() == static_cast<std::streamsize>(record.size());
  }

  // What is wrong with the record, empty if nothing is. Notes its key and move.
  std::string faultOf(const std::vector<unsigned char>& record) {
    std::uint64_t key = 0;
    for (int i = 0; i < 8; ++i) key = (key << 8) | record[i];
    const unsigned from = record[8] & 0x7F;
    const unsigned to = record[9];
    if (key == 0) return "the key 0 is no position's";
    if (report_.records > 0 && key < lastKey_) return "not in the order of the keys";
    if ((from & 0x88) != 0 || (to & 0x88) != 0) return "not a square of the board";
    const std::size_t move = from * 128 + to;
    if (report_.records == 0 || key != lastKey_) {
      ++report_.positions;
      moves_.reset();
    } else if (moves_.test(move) && move != lastMove_) {
      return "a move of its position comes again behind others";
    }
    moves_.set(move);
    lastMove_ = move;
    lastKey_ = key;
    return {};
  }

  // Visits every position that the book's moves reach from the start position.
  void walk() {
    Board board;
    setFen(board, StartPosition);
    std::vector<std::string> open = {getFen(board).text()};
    std::unordered_set<std::uint64_t> seen = {Book::bookKey(open.back().c_str())->lookupKey()};
    while (!open.empty() && report_.faults < MaxFaults) {
      const std::string fen = open.back();
      open.pop_back();
      if (book_.loadCandidates(fen.c_str()) == 0) continue;
      ++report_.reachablePositions;
      for (const BookEntry& entry : book_.candidates()) {
        const std::string next = positionAfter(board, fen, entry);
        if (!next.empty() && seen.insert(Book::bookKey(next.c_str())->lookupKey()).second) {
          open.push_back(next);
        }
      }
    }
  }

  // The position after the entry's move, empty after a fault.
  std::string positionAfter(Board& board, const std::string& fen, const BookEntry& entry) {
    const auto text = Book::moveText(entry);
    setFen(board, fen.c_str());
    const Move move = parseMove(board, text.data(), nullptr);
    ++report_.playedMoves;
    if (move == NoMove) {
      fail("not a legal move: " + std::string(text.data()) + " in " + fen);
      return {};
    }
    makeMove(board, move);
    updateAttackInfo(board);
    return getFen(board).text();
  }

  const std::string& path_;
  std::FILE* messages_;
  Book book_;
  BookReport report_;
  std::uint64_t lastKey_ = 0;
  std::size_t lastMove_ = 0;
  std::bitset<128 * 128> moves_;  // seen in the current position, by origin and destination
};

}  // namespace

BookReport checkBook(const std::string& path, std::FILE* messages) {
  return BookChecker(path, messages).run();
}

}  // namespace quill
