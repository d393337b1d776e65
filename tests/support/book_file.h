// A builder of book files, written from the file format alone, for programs that link the book.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "book/book.h"
#include "support/capture.h"
#include "support/positions.h"

namespace quill::test {

// One record; the squares are given as text (e2e4).
struct TestRecord {
  std::uint64_t key = 0;
  std::string move = "a1a1";
  std::uint32_t wins = 0;
  std::uint32_t draws = 0;
  std::uint32_t losses = 0;
  std::uint32_t elo = 0;
  std::uint8_t fromFlag = 0;  // or-ed into the origin, for its unused bit 7
};

inline void appendBigEndian(std::string& bytes, std::uint64_t value, int size) {
  for (int i = size - 1; i >= 0; --i) bytes += static_cast<char>((value >> (8 * i)) & 0xFF);
}

inline std::string headerBytes(unsigned flags, unsigned recordSize, unsigned headerSize = 16) {
  std::string bytes(12, '\0');
  for (const unsigned value : {headerSize, 1u, recordSize, flags})
    bytes += static_cast<char>(value);
  return bytes;
}

// The records in the layout of the flags, sorted stably by key.
inline std::string recordBytes(std::vector<TestRecord> records, unsigned flags) {
  std::stable_sort(records.begin(), records.end(),
                   [](const TestRecord& a, const TestRecord& b) { return a.key < b.key; });
  const auto square = [](const std::string& move, std::size_t at) {
    return static_cast<unsigned>((move[at] - 'a') + 16 * (move[at + 1] - '1'));
  };
  std::string bytes;
  for (const TestRecord& record : records) {
    appendBigEndian(bytes, record.key, 8);
    appendBigEndian(bytes, square(record.move, 0) | record.fromFlag, 1);
    appendBigEndian(bytes, square(record.move, 2), 1);
    if ((flags & 2) != 0) {
      for (const std::uint32_t n : {record.wins, record.draws, record.losses}) {
        appendBigEndian(bytes, n, 2);
      }
    }
    if ((flags & 4) != 0) appendBigEndian(bytes, record.elo, 2);
  }
  return bytes;
}

inline unsigned recordSizeOf(unsigned flags) {
  return 10 + ((flags & 2) != 0 ? 6 : 0) + ((flags & 4) != 0 ? 2 : 0);
}

inline std::string bookBytes(const std::vector<TestRecord>& records, unsigned flags) {
  return headerBytes(flags, recordSizeOf(flags)) + recordBytes(records, flags);
}

inline std::uint64_t lookupKeyOf(const char* fen) { return Book::bookKey(fen)->lookupKey(); }

}  // namespace quill::test
