// Counts of move trees against the published ones.
#include <gtest/gtest.h>

#include "board/fen.h"
#include "board/perft.h"
#include "support/positions.h"

namespace quill::test {
namespace {

// Counts each position to the deepest published depth of at most so many leaves.
void countUpTo(std::uint64_t leaves) {
  for (const PerftCase& position : PerftCases) {
    Board board;
    ASSERT_TRUE(setFen(board, position.fen));
    for (int depth = 1; depth <= 7 && position.counts[depth - 1] != 0; ++depth) {
      if (position.counts[depth - 1] > leaves) break;
      EXPECT_EQ(perft(board, depth), position.counts[depth - 1])
          << position.fen << " depth " << depth;
    }
  }
}

TEST(Perft, CountsAreThePublishedOnes) { countUpTo(700'000); }

#ifdef NDEBUG
TEST(PerftSlow, DeepCountsAreThePublishedOnes) { countUpTo(200'000'000); }
#else
TEST(PerftSlow, DeepCountsAreThePublishedOnes) { countUpTo(5'000'000); }
#endif

}  // namespace
}  // namespace quill::test
