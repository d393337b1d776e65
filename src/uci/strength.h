// Playing weaker on demand: what a rating stands for, and which move a player of it chooses.
//
// A weaker player looks less far and is less sure which of several moves is the best one. Both grow
// evenly as the rating falls, so that it is many small losses that cost the game, and not a blunder
// now and then among the moves of a master.
#pragma once

#include <cstdint>

#include "search/root_moves.h"

namespace quill {

// Ratings that can be asked for.
inline constexpr int MinElo = 1200;
inline constexpr int MaxElo = 2400;

struct Strength {
  std::uint64_t nodes;  // that the search of a move may take
  int width;            // centipawns; a move that loses as much against the best is never played
  int lines;            // root moves that are compared, at least 1

  // Of the rating, which is moved into MinElo..MaxElo.
  static Strength of(int elo);
};

// The slot of the root move to play, drawn from the best ones: the less a move loses against the
// best, the likelier it is. The draw depends on the position's key and the scores alone. A forced
// mate, for either side, leaves no choice; nor does a search that has compared no moves.
int drawRootMove(const RootMoveList& moves, const Strength& strength, std::uint64_t key);

}  // namespace quill
