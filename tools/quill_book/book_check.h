// Verifies a book file: its layout, the order of its records, and that its moves can be played.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace quill {

struct BookReport {
  std::uint64_t slots = 0;  // of the whole file, header included: what the engine calls moves
  std::uint64_t records = 0;
  std::uint64_t positions = 0;
  std::uint64_t reachablePositions = 0;  // from the start position, by the book's own moves
  std::uint64_t playedMoves = 0;         // moves of those positions that were tried
  std::uint64_t faults = 0;

  bool isSound() const { return faults == 0; }
};

// Reads the whole file, then walks through the book from the start position. Each fault is reported
// to messages in one line. A fault in the records ends the check; the walk ends after MaxFaults.
BookReport checkBook(const std::string& path, std::FILE* messages);

inline constexpr std::uint64_t MaxFaults = 10;

}  // namespace quill
