#include "search/tt.h"

#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "board/movegen.h"
#include "platform/cpu.h"
#include "platform/memory.h"
#include "platform/thread.h"
#include "search/worker.h"
#include "shell/log.h"

namespace quill {

namespace {

constexpr std::uint64_t EntryBytes = 16;
constexpr std::uint64_t SmallestTable = 256 * 1024;  // bytes, unless allocations fail
constexpr std::uint64_t GiveUpBytes = 63;
constexpr std::uintptr_t Alignment = 128;  // bytes; a bucket never straddles a cache line
constexpr int Ways = 4;
constexpr int StaleWorth =
    -8192;  // what an entry of an earlier search is worth less than its depth

constexpr std::uint64_t ClearedAtOnce = 32 << 20;  // bytes by one thread, unless processors lack
constexpr std::uint64_t MostClearingThreads = 16;
constexpr std::size_t ClearingStackBytes = 64 << 10;

std::uint32_t lockOf(const Board& board) {
  return static_cast<std::uint32_t>(board.key >> 32) ^ static_cast<std::uint32_t>(board.key);
}

}  // namespace

Tt::Tt() { resize(1024); }

Tt::~Tt() { std::free(block_); }

std::uint64_t Tt::resize(std::uint64_t kilobytes) {
  std::uint64_t bytes = std::max(SmallestTable, std::bit_floor(kilobytes) * 1024);
  if (bytes == sizeBytes()) return bytes;
  std::free(block_);
  block_ = nullptr;
  for (; bytes > GiveUpBytes; bytes /= 2) {
    block_ = std::malloc(bytes + Alignment);
    if (block_ != nullptr) {
      const auto address = reinterpret_cast<std::uintptr_t>(block_);
      auto* first = reinterpret_cast<std::byte*>((address + Alignment - 1) & ~(Alignment - 1));
      platform::preferLargePages(first, bytes);
      entries_ = bytes / EntryBytes;
      mask_ = entries_ - 1;
      table_ = reinterpret_cast<Slot*>(first);
      clear();
      return bytes;
    }
    log("tt: malloc(%llu) failed, retrying...\n", static_cast<unsigned long long>(bytes));
  }
  log("FATAL: failed to malloc Tt!\n");
  flushLog();
  std::fputs("FATAL: failed to malloc Tt!\n", stderr);
  std::abort();
}

void Tt::clear() {
  // The entries are made anew, all zero, whether or not there have been any. In a big table the
  // system looks for memory meanwhile: that takes most of the time, and several threads share it,
  // so that the memory lies near all processors, not just near the input thread's.
  struct Part {
    Slot* first;
    std::uint64_t count;
    platform::Thread thread;
  };
  const auto empty = [](void* argument) {
    const Part& part = *static_cast<Part*>(argument);
    std::uninitialized_value_construct_n(part.first, part.count);
  };
  std::array<Part, MostClearingThreads> parts;
  const auto wanted = std::min({std::uint64_t{MostClearingThreads}, sizeBytes() / ClearedAtOnce + 1,
                                static_cast<std::uint64_t>(platform::processorCount())});
  for (std::uint64_t i = 0; i < wanted; ++i) {
    const std::uint64_t from = entries_ * i / wanted;
    parts[i].first = table_ + from;
    parts[i].count = entries_ * (i + 1) / wanted - from;
    const bool isLast = i + 1 == wanted;
    if (isLast || !parts[i].thread.start(empty, &parts[i], ClearingStackBytes)) empty(&parts[i]);
  }
  for (std::uint64_t i = 0; i < wanted; ++i) parts[i].thread.join();
  generation_ = 1;
}

TtEntry Tt::load(const Slot& slot) {
  const std::uint64_t first = slot.words[0].load(std::memory_order_relaxed);
  const std::uint64_t second = slot.words[1].load(std::memory_order_relaxed);
  TtEntry entry;
  entry.lock = static_cast<std::uint32_t>(first);
  entry.move = static_cast<Move>(first >> 32);
  entry.bound = static_cast<std::uint8_t>(second);
  entry.depth = static_cast<std::int8_t>(second >> 8);
  entry.score = static_cast<std::int16_t>(second >> 16);
  entry.eval = static_cast<std::int16_t>(second >> 32);
  entry.generation = static_cast<std::uint8_t>(second >> 48);
  return entry;
}

void Tt::save(Slot& slot, const TtEntry& entry) {
  const std::uint64_t first = entry.lock | (std::uint64_t{entry.move} << 32);
  const std::uint64_t second = entry.bound |
                               (std::uint64_t{static_cast<std::uint8_t>(entry.depth)} << 8) |
                               (std::uint64_t{static_cast<std::uint16_t>(entry.score)} << 16) |
                               (std::uint64_t{static_cast<std::uint16_t>(entry.eval)} << 32) |
                               (std::uint64_t{entry.generation} << 48);
  slot.words[0].store(first, std::memory_order_relaxed);
  slot.words[1].store(second, std::memory_order_relaxed);
}

bool Tt::probe(const Worker& worker, TtEntry& out) {
  const Board& board = worker.board;
  const std::uint32_t lock = lockOf(board);
  const std::uint64_t home = homeIndex(board.key, board.stm);
  for (unsigned ways = findLock(home, lock); ways != 0; ways &= ways - 1) {
    Slot& slot = table_[home ^ static_cast<unsigned>(std::countr_zero(ways))];
    const TtEntry entry = load(slot);
    // Another thread may have replaced it since.
    if (entry.lock != lock || entry.bound == NoBound) continue;
    if (entry.move != NoMove && !isLegalMove(board, entry.move)) continue;
    out = entry;
    if (entry.generation != generation_) {
      out.generation = generation_;
      save(slot, out);
    }
    return true;
  }
  return false;
}

Tt::Victim Tt::chooseVictim(std::uint64_t home) const {
  // Worth and way in one number: of equal worth the lower way goes.
  int least = INT_MAX;
  for (unsigned way = 0; way < Ways; ++way) {
    const std::uint64_t second = table_[home ^ way].words[1].load(std::memory_order_relaxed);
    const int depth = static_cast<std::int8_t>(second >> 8);
    const bool isCurrent = static_cast<std::uint8_t>(second >> 48) == generation_;
    const int worth = depth + (isCurrent ? 0 : StaleWorth);
    least = std::min(least, worth * Ways + static_cast<int>(way));
  }
  return {static_cast<unsigned>(least) % Ways, least > StaleWorth / 2 * Ways};
}

namespace {

// Whether the deeper entry stays: a shallower result replaces it only when it narrows its bound.
bool keepsDeeper(const TtEntry& entry, const TtEntry& old) {
  if (entry.depth >= old.depth) return false;
  if (old.bound == ExactBound) return true;
  if ((old.bound & LowerBound) != 0) return entry.score <= old.score;
  return old.bound == UpperBound && entry.score >= old.score;
}

}  // namespace

void Tt::store(Worker& worker, TtEntry entry) {
  entry.lock = lockOf(worker.board);
  entry.generation = generation_;
  // No move of a node that failed low is known to be good.
  if (entry.bound == UpperBound) entry.move = NoMove;

  const std::uint64_t home = homeIndex(worker.board.key, worker.board.stm);
  if (const unsigned ways = findLock(home, entry.lock)) {
    Slot& slot = table_[home ^ static_cast<unsigned>(std::countr_zero(ways))];
    const TtEntry old = load(slot);
    if (keepsDeeper(entry, old)) return;
    if (entry.move == NoMove) entry.move = old.move;
    save(slot, entry);
    ++worker.stats.ttHits;
    return;
  }
  const Victim victim = chooseVictim(home);
  ++worker.stats.ttNew;
  if (victim.isCurrent) ++worker.stats.ttOverwrites;
  save(table_[home ^ victim.way], entry);
}

void Tt::storeScore(Worker& worker, int bound, int depth, int ply, int score, Move move, int eval) {
  TtEntry entry{};
  entry.move = move;
  entry.bound = static_cast<std::uint8_t>(bound);
  entry.depth = static_cast<std::int8_t>(std::min(depth, 127));
  entry.score = static_cast<std::int16_t>(scoreToTable(score, ply));
  entry.eval = static_cast<std::int16_t>(eval);
  store(worker, entry);
}

bool Tt::remove(const Worker& worker) {
  const std::uint32_t lock = lockOf(worker.board);
  const std::uint64_t home = homeIndex(worker.board.key, worker.board.stm);
  bool found = false;
  for (std::uint64_t way = 0; way < Ways; ++way) {
    Slot& slot = table_[home ^ way];
    if (load(slot).lock != lock) continue;
    save(slot, TtEntry{});
    found = true;
  }
  return found;
}

}  // namespace quill
