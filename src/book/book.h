// The opening book: a file of fixed-size records, sorted by position key, that stays on disk.
//
// A look-up is a binary search in the file that keeps only the records of one position, so memory
// use does not depend on the size of the book. The key of a position comes from its FEN text and
// the table in book_keys.h, not from the Zobrist keys. docs/book_format.md describes the file.
//
// Threads: the input thread only, since every look-up moves the file position.
#pragma once

#include <array>
#include <cstdint>
#include <fstream>
#include <optional>
#include <span>

namespace quill {

struct Board;

// A candidate move of a position.
struct BookEntry {
  std::uint64_t key;   // look-up key of the position
  std::uint32_t wins;  // games won after this move by the side that plays it; 0 without counts
  std::uint32_t draws;
  std::uint32_t losses;
  float strength;     // 2^((elo - 2400) / 70), summed over merged records; 0 in a book without Elo
  std::uint8_t from;  // squares in 0x88 form: file in bits 0-2, rank in bits 4-6
  std::uint8_t to;
};

// The most candidates of one position that a look-up keeps.
inline constexpr int MaxBookCandidates = 32;

// What the book needs to know of a position.
struct BookPosition {
  std::uint64_t key;  // without the side to move
  bool black;         // Black is to move
  int ply;            // from the full-move number, 0 at the first move; below 0 without a number

  std::uint64_t lookupKey() const { return key ^ (black ? 1 : 0); }
};

// The layout of a book file, from the 16 bytes at its start; the defaults are those of a file
// without a header.
struct BookHeader {
  static constexpr std::uint32_t Size = 16;         // bytes of the header itself
  static constexpr std::uint32_t ReservedFlag = 1;  // must not be set
  static constexpr std::uint32_t CountsFlag = 2;    // records carry wins, draws and losses
  static constexpr std::uint32_t EloFlag = 4;       // records carry an Elo value

  std::uint32_t headerSize = 0;  // offset of the first record, bytes
  std::uint32_t version = 0;     // not interpreted
  std::uint32_t recordSize = 16;
  std::uint32_t flags = CountsFlag;

  bool hasCounts() const { return (flags & CountsFlag) != 0; }
  bool hasElo() const { return (flags & EloFlag) != 0; }
  // Bytes of a record with the fields that the flags name: 10, 12, 16 or 18.
  std::uint32_t fieldBytes() const { return 10u + (hasCounts() ? 6u : 0u) + (hasElo() ? 2u : 0u); }
};

class Book {
 public:
  // Opens the file for look-ups; a book opened before is closed.
  // On failure: false, and every look-up finds nothing. The path must name a regular file, its
  // record size must be the sum of its fields, and the reserved flag must not be set.
  bool open(const char* path);

  // Slots of the file: its size, header included, divided by the record size. So a book with a
  // header and 16-byte records has one slot more than it has records.
  std::uint64_t recordCount() const { return recordCount_; }

  // What the book reads from the FEN text.
  // On failure: none, with one line on standard error when the pieces run off the board.
  static std::optional<BookPosition> bookKey(const char* fen);
  // The same as of the board's own FEN text.
  static BookPosition bookKey(const Board& board);

  // Whether the book holds the key; if so, the first record of that key is read next.
  bool find(std::uint64_t target);

  // Fills candidates() for the position and returns their number, 0..MaxBookCandidates. Records
  // that repeat the move of the record before them are merged.
  int loadCandidates(const BookPosition& position);
  int loadCandidates(const char* fen);

  // The result of the last loadCandidates.
  std::span<const BookEntry> candidates() const {
    return {candidates_.data(), static_cast<std::size_t>(candidateCount_)};
  }

  bool hasElo() const { return header_.hasElo(); }
  const BookHeader& header() const { return header_; }

  // The move in coordinates (e2e4), 0-terminated; a promotion has no letter.
  static std::array<char, 5> moveText(const BookEntry& entry);

  // Reads of the file since it was opened, for measurements.
  std::uint64_t readCount() const { return readCount_; }

 private:
  void close();
  bool readHeader();
  std::size_t readAt(std::uint64_t offset, std::uint8_t* out, std::size_t size);
  std::uint64_t keyOfSlot(std::uint64_t slot);
  BookEntry decode(const std::uint8_t* record) const;
  bool takeCandidate(const BookEntry& entry);

  std::ifstream file_;
  BookHeader header_;
  std::uint64_t fileSize_ = 0;
  std::uint64_t recordCount_ = 0;
  std::uint64_t position_ = 0;  // offset of the record to be read next
  std::uint64_t readCount_ = 0;
  std::array<BookEntry, MaxBookCandidates> candidates_{};
  int candidateCount_ = 0;
};

}  // namespace quill
