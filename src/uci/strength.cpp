#include "uci/strength.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace quill {

namespace {

constexpr int EloStep = 200;

// A row for each step from MinElo to MaxElo; what lies between is interpolated.
constexpr std::array<Strength, 7> Strengths = {{
    // nodes, width, lines
    {600, 180, 10},  // 1200
    {1300, 130, 8},  // 1400
    {3300, 95, 6},   // 1600
    {12000, 50, 5},  // 1800
    {45000, 28, 4},  // 2000
    {210000, 8, 3},  // 2200
    {800000, 3, 2},  // 2400
}};

static_assert(MinElo + EloStep * (static_cast<int>(Strengths.size()) - 1) == MaxElo);

// Sets the draws of one program apart from the keys themselves.
constexpr std::uint64_t Seed = 0x9E3779B97F4A7C15;

std::int64_t between(std::int64_t low, std::int64_t high, int step) {
  return low + (high - low) * step / EloStep;
}

// A number that looks random, each bit of the key changing about half of its bits.
std::uint64_t mix(std::uint64_t key) {
  key += Seed;
  key = (key ^ (key >> 30)) * 0xBF58476D1CE4E5B9;
  key = (key ^ (key >> 27)) * 0x94D049BB133111EB;
  return key ^ (key >> 31);
}

// How often the move at the slot is played, beside the others.
std::uint32_t weightOf(const RootMoveList& moves, int slot, int width) {
  const RootMove& move = moves.at(slot);
  // What only has a bound may be worth much less. The best move is played all the same.
  if (slot > 0 && move.bound != Exact) return 0;
  const int loss = std::max(bestScore(moves) - move.score, 0);
  return static_cast<std::uint32_t>(std::max(width - loss, 0));
}

}  // namespace

Strength Strength::of(int elo) {
  const int above = std::clamp(elo, MinElo, MaxElo) - MinElo;
  const std::size_t row = std::min(static_cast<std::size_t>(above / EloStep), Strengths.size() - 2);
  const Strength& low = Strengths[row];
  const Strength& high = Strengths[row + 1];
  const int step = above - static_cast<int>(row) * EloStep;
  return {static_cast<std::uint64_t>(between(static_cast<std::int64_t>(low.nodes),
                                             static_cast<std::int64_t>(high.nodes), step)),
          static_cast<int>(between(low.width, high.width, step)),
          static_cast<int>(between(low.lines, high.lines, step))};
}

int drawRootMove(const RootMoveList& moves, const Strength& strength, std::uint64_t key) {
  if (std::abs(bestScore(moves)) > ForcedMateScore) return 0;
  const int count = lineCount(moves, strength.lines);
  std::uint64_t sum = 0;
  for (int slot = 0; slot < count; ++slot) sum += weightOf(moves, slot, strength.width);
  std::uint64_t left = mix(key) % std::max<std::uint64_t>(sum, 1);
  for (int slot = 0; slot < count; ++slot) {
    const std::uint32_t weight = weightOf(moves, slot, strength.width);
    if (left < weight) return slot;
    left -= weight;
  }
  return 0;
}

}  // namespace quill
