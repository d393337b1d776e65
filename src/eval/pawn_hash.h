// What is known of a pawn formation, and the hash table by pawnKey that keeps it.
#pragma once

#include <cstdint>

#include "board/board.h"

namespace quill {

// One pawn formation. 32 bytes, so that two share a cache line.
struct PawnEntry {
  struct SideValues {
    std::int16_t opening;    // pawn structure, centipawns, weighted
    std::int16_t endgame;    // the same for the endgame
    std::int8_t shelter[3];  // of a king on the b-, e-, g-file of the back rank, in this order
    std::uint8_t candidate;  // 1 if the side has a candidate passed pawn, else 0
  };

  std::uint64_t passed;  // passed pawns of both colours; of doubled pawns only the front one
  std::uint64_t key;     // pawnKey of the formation
  SideValues side[2];
};
static_assert(sizeof(PawnEntry) == 32);

// Indices into PawnEntry::SideValues::shelter.
enum ShelterSlot : int { ShelterB, ShelterE, ShelterG };

// The pawn formations that one thread has met lately. A new formation always replaces the old one.
struct PawnHash {
  explicit PawnHash(const Board& board);
  PawnHash(const PawnHash&) = delete;
  PawnHash& operator=(const PawnHash&) = delete;
  ~PawnHash();

  const Board& board;
  PawnEntry* table = nullptr;  // aligned to 256 bytes inside the allocation
  std::uint32_t count = 0;     // entries, a power of two
  std::uint32_t mask = 0;      // count - 1
  std::uint32_t hits = 0;      // probes that found their formation
  std::uint32_t stores = 0;    // probes that computed it
  void* allocation = nullptr;  // owned
};

// Gives the table as many entries as the largest power of two not above the number (at least 1),
// and empties it.
// On failure: one line on standard error, and the program aborts.
void resizePawnHash(PawnHash& hash, std::uint32_t entries);

// Empties the table and zeroes its two counters.
void clearPawnHash(PawnHash& hash);

}  // namespace quill
