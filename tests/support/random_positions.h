// Positions from random games, for tests of properties that must hold everywhere.
#pragma once

#include <cstdint>
#include <random>
#include <string>

#include "board/board.h"

namespace quill::test {

#ifdef NDEBUG
// Positions that a property is tried on. Checked builds are many times slower.
inline constexpr int PropertyPositions = 100'000;
#else
inline constexpr int PropertyPositions = 10'000;
#endif

// Plays random legal moves from each of the varied positions in turn, forever. The same seed gives
// the same positions on every machine; it is printed, so that a failing test shows it.
class RandomPositions {
 public:
  explicit RandomPositions(std::uint64_t seed);

  // The next position, with valid attack information and its game on the stacks. The caller may
  // play on it, as long as it takes everything back.
  Board& next();

  // A number in 0..bound-1, from the same stream.
  std::uint32_t below(std::uint32_t bound);
  std::uint32_t bits() { return static_cast<std::uint32_t>(random_() >> 32); }

 private:
  void startGame();

  std::mt19937_64 random_;
  Board board_;
  unsigned game_ = 0;  // games started
  int pliesLeft_ = 0;  // until the next game starts
};

// Up to so many times, takes up to two bytes out of the text somewhere and puts nothing, one of the
// letters or any byte there.
void damage(std::string& text, RandomPositions& random, std::uint32_t most,
            const std::string& letters);

// The board as a test shows it: FEN, and the last move for what FEN cannot say.
std::string describe(const Board& board);

}  // namespace quill::test
