// The transposition table: what is known of a position, shared by all search threads without locks.
//
// An entry has 16 bytes, and a bucket is four entries in one cache line. A new entry replaces one
// of an earlier search first, then the one of least depth.
//
// Threads: an entry is read and written as two relaxed 64-bit atomics. A reader may see halves of
// two writers; the lock comparison and the legality test of the move in probe make that harmless: a
// wrong score can mislead the search, never make it play an illegal move. resize and clear run only
// while no search does.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "board/board.h"
#include "board/make_move.h"
#include "platform/prefetch.h"
#include "search/params.h"

namespace quill {

struct Worker;

enum BoundFlags : std::uint8_t {
  NoBound = 0,
  UpperBound = 1,  // true score <= score
  LowerBound = 2,  // true score >= score
  ExactBound = 3,
  StaticCut = 4,  // with LowerBound: obtained without searching moves (static or null-move cut-off)
};

struct TtEntry {
  std::uint32_t lock;       // high half of the key XOR its low half
  Move move;                // 0 = none
  std::uint8_t bound;       // BoundFlags; 0 marks an empty entry
  std::int8_t depth;        // plies, at most 127; -64 for unsearched moves of a principal variation
  std::int16_t score;       // mate scores relative to this position
  std::int16_t eval;        // static evaluation, or NotEvaluated
  std::uint8_t generation;  // of the table when written or last found
};

class Tt {
 public:
  // The size that the engine starts with.
  static constexpr int DefaultMegabytes = 32;

  // Makes a table of 1 MB.
  Tt();
  ~Tt();
  Tt(const Tt&) = delete;
  Tt& operator=(const Tt&) = delete;

  // Sets the size to the largest power of two not above the request, at least 256 KB, and empties
  // the table; a request for the present size changes nothing. Returns the bytes obtained. On
  // failure: retries with half the size, one log line each; below 64 bytes the program ends.
  std::uint64_t resize(std::uint64_t kilobytes);

  void clear();
  // Ages all entries by one generation.
  void newSearch() { ++generation_; }

  // Whether there is an entry of the position on the worker's board, its move, if any, being legal.
  bool probe(const Worker& worker, TtEntry& out);
  // Stores an entry whose move, bound, depth, score (relative to the node) and eval are set.
  void store(Worker& worker, TtEntry entry);
  // The form that the search uses: converts a mate score found at ply and stores.
  void storeScore(Worker& worker, int bound, int depth, int ply, int score, Move move, int eval);
  // Empties every entry of the position; tells whether there was one.
  bool remove(const Worker& worker);

  // Ask for the bucket of the board's position, and for that of the position after the move (0: the
  // null move), before it is needed.
  void prefetch(const Board& board) const { prefetch(board.key, board.stm); }
  void prefetchChild(const Board& board, Move move) const {
    prefetch(keyAfter(board, move), board.stm ^ 1);
  }

  std::uint64_t entries() const { return entries_; }
  std::uint64_t sizeBytes() const { return entries_ * 16; }
  std::uint8_t generation() const { return generation_; }

 private:
  // An entry as stored. words[0] = lock | move << 32; words[1] = bound | depth << 8 | score << 16 |
  // eval << 32 | generation << 48.
  struct Slot {
    std::atomic<std::uint64_t> words[2];
  };

  // The first entry to look at; the side to move, which the key does not know, chooses the bucket.
  std::uint64_t homeIndex(std::uint64_t key, Colour stm) const {
    return (static_cast<std::uint32_t>(key) + 4u * static_cast<unsigned>(stm)) & mask_;
  }
  void prefetch(std::uint64_t key, Colour stm) const {
    platform::prefetch(&table_[homeIndex(key, stm)]);
  }
  // The ways of the bucket whose entry has the lock, one bit each. There is no branch on what a way
  // holds: none could be foreseen.
  unsigned findLock(std::uint64_t home, std::uint32_t lock) const {
    const auto has = [&](unsigned way) {
      const std::uint64_t first = table_[home ^ way].words[0].load(std::memory_order_relaxed);
      return static_cast<unsigned>(static_cast<std::uint32_t>(first) == lock) << way;
    };
    return has(0) | has(1) | has(2) | has(3);
  }
  // The way that a new entry replaces, and whether its entry is of this search.
  struct Victim {
    unsigned way;
    bool isCurrent;
  };
  Victim chooseVictim(std::uint64_t home) const;
  static TtEntry load(const Slot& slot);
  static void save(Slot& slot, const TtEntry& entry);

  Slot* table_ = nullptr;  // aligned to 128 bytes inside block_
  void* block_ = nullptr;  // as the allocator gave it; owned
  std::uint64_t entries_ = 0;
  std::uint64_t mask_ = 0;
  std::uint8_t generation_ = 0;
};

// Mate scores are stored relative to the node at ply and read back likewise.
constexpr int scoreToTable(int score, int ply) {
  return score > TableMateScore ? score + ply : score < -TableMateScore ? score - ply : score;
}
constexpr int scoreFromTable(int score, int ply) {
  return score > TableMateScore ? score - ply : score < -TableMateScore ? score + ply : score;
}

}  // namespace quill
