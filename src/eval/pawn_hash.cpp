#include "eval/pawn_hash.h"

#include <bit>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace quill {

namespace {

constexpr std::size_t TableAlignment = 256;  // bytes

}  // namespace

PawnHash::PawnHash(const Board& hashed) : board(hashed) { resizePawnHash(*this, 1); }

PawnHash::~PawnHash() { std::free(allocation); }

void resizePawnHash(PawnHash& hash, std::uint32_t entries) {
  const std::uint32_t rounded = std::bit_floor(entries == 0 ? 1u : entries);
  const std::size_t bytes = std::size_t{rounded} * sizeof(PawnEntry) + TableAlignment;
  void* block = std::realloc(hash.allocation, bytes);
  if (block == nullptr) {
    std::fprintf(stderr, "failed to allocate %zu bytes for pawnhash\n", bytes);
    std::abort();
  }
  hash.allocation = block;
  const auto address = reinterpret_cast<std::uintptr_t>(block);
  hash.table = reinterpret_cast<PawnEntry*>((address + TableAlignment - 1) & ~(TableAlignment - 1));
  hash.count = rounded;
  hash.mask = rounded - 1;
  clearPawnHash(hash);
}

void clearPawnHash(PawnHash& hash) {
  hash.hits = 0;
  hash.stores = 0;
  std::memset(static_cast<void*>(hash.table), 0, hash.count * sizeof(PawnEntry));
  // A board without pawns has key 0, which must not find an empty entry.
  hash.table[0].key = 1;
}

}  // namespace quill
