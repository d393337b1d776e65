#include "eval/evaluate.h"
#include "eval/pawns.h"

#include <gtest/gtest.h>
#ifdef __linux__
#include <sys/resource.h>

#include <csignal>
#endif

#include "eval/trapped.h"
#include "support/mirror.h"
#include "support/play.h"
#include "support/positions.h"

namespace quill::test {
namespace {

class EvaluatorTest : public testing::Test {
 protected:
  EvalTables tables;
  Board board = boardOf(KiwipeteFen);
  Evaluator evaluator{board, tables};
};

TEST_F(EvaluatorTest, CachedResultsCountButAreNotComputedAgain) {
  const int score = evaluate(evaluator);
  // A weight that the cache does not know of shows whether the terms were summed again.
  setEvalWeight(tables, KingAttack, 0);
  EXPECT_EQ(evaluate(evaluator), score);
  EXPECT_EQ(evaluator.evalCount, 2u);
  EXPECT_EQ(evaluator.pawnHash.stores, 1u);

  clearEvaluator(evaluator);
  EXPECT_NE(evaluate(evaluator), score);
  EXPECT_EQ(evaluator.evalCount, 3u);
}

TEST_F(EvaluatorTest, BothSidesToMoveHaveTheirOwnResults) {
  board = boardOf(StartFen);
  EXPECT_EQ(evaluate(evaluator), 12);
  board.stm = Black;
  EXPECT_EQ(evaluate(evaluator), 12);
  board = boardOf("rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -");
  const int white = evaluate(evaluator);
  board.stm = Black;
  EXPECT_LT(evaluate(evaluator), 0);
  EXPECT_GT(white, 0);
}

TEST_F(EvaluatorTest, EveryTrapHasItsPriceForBothColours) {
  const struct {
    const char* fen;
    int price;  // of White's trapped piece
  } cases[] = {
      {"N3k3/2p5/8/8/8/8/8/4K3", 250},  {"4k2N/5p2/8/8/8/8/8/4K3", 250},
      {"1N2k3/1p6/8/8/8/8/8/4K3", 250}, {"4k1N1/6p1/8/8/8/8/8/4K3", 250},
      {"4k3/B7/1p6/8/8/8/8/4K3", 150},  {"4k3/7B/6p1/8/8/8/8/4K3", 150},
      {"4k3/8/B7/1p6/8/8/8/4K3", 100},  {"4k3/8/7B/6p1/8/8/8/4K3", 100},
      {"4k3/8/8/8/8/8/P7/RK6", 45},     {"4k3/8/8/8/P7/8/R7/2K5", 45},
      {"4k3/8/8/8/8/8/PP6/RRK5", 45},   {"4k3/8/8/8/8/8/6P1/5KR1", 45},
      {"4k3/8/8/8/8/8/7P/6KR", 45},     {"4k3/8/8/8/8/8/6P1/6KR", 0},
      {"4k3/2p5/8/8/8/8/8/N3K3", 0},
  };
  for (const auto& c : cases) {
    board = boardOf(c.fen);
    EXPECT_EQ(trappedPieces(evaluator), -c.price) << c.fen;
    board = mirrored(board);
    EXPECT_EQ(trappedPieces(evaluator), c.price) << c.fen << ", mirrored";
  }
}

TEST_F(EvaluatorTest, PawnHashTellsHitsFromStoresAndFindsPawnlessBoards) {
  board = boardOf("4k3/8/8/8/8/8/8/R3K3 w - -");
  pawnStructure(evaluator);  // key 0 must not find the empty entry
  EXPECT_EQ(evaluator.pawnHash.stores, 1u);
  pawnStructure(evaluator);
  EXPECT_EQ(evaluator.pawnHash.hits, 1u);
  EXPECT_EQ(evaluator.pawnEntry->passed, 0u);

  // With one entry every change of formation computes anew, back and forth.
  const Board pawnless = board;
  for (int i = 0; i < 2; ++i) {
    board = boardOf("4k3/8/8/8/8/P7/P7/4K3 w - -");
    EXPECT_EQ(pawnStructure(evaluator).passed, bit(A3)) << "only the front pawn counts";
    board = pawnless;
    EXPECT_EQ(pawnStructure(evaluator).passed, 0u);
  }
  EXPECT_EQ(evaluator.pawnHash.stores, 5u);
}

TEST_F(EvaluatorTest, ResizedPawnHashIsAlignedEmptyAndAPowerOfTwo) {
  for (const auto& [asked, given] :
       {std::pair{0u, 1u}, {1u, 1u}, {131072u, 131072u}, {1000u, 512u}}) {
    pawnStructure(evaluator);
    resizePawnHash(evaluator.pawnHash, asked);
    EXPECT_EQ(evaluator.pawnHash.count, given);
    EXPECT_EQ(evaluator.pawnHash.mask, given - 1);
    EXPECT_EQ(evaluator.pawnHash.stores, 0u);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(evaluator.pawnHash.table) % 256, 0u);
    for (std::uint32_t i = 1; i < given; ++i) ASSERT_EQ(evaluator.pawnHash.table[i].key, 0u);
    pawnStructure(evaluator);
    EXPECT_EQ(evaluator.pawnHash.stores, 1u);
  }
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && \
    !defined(__clang__)
TEST(PawnHashDeathTest, ExhaustedMemoryEndsTheProgramWithAMessage) {
  rlimit old;
  getrlimit(RLIMIT_AS, &old);
  const rlimit limit{1u << 28, old.rlim_max};
  setrlimit(RLIMIT_AS, &limit);
  rlimit kept;
  getrlimit(RLIMIT_AS, &kept);
  setrlimit(RLIMIT_AS, &old);
  if (kept.rlim_cur != limit.rlim_cur) GTEST_SKIP() << "an emulator limits no memory";
  const auto exhaust = [&limit] {
    const Board board;
    PawnHash hash(board);
    setrlimit(RLIMIT_AS, &limit);
    resizePawnHash(hash, 1u << 24);
  };
  EXPECT_EXIT(exhaust(), testing::KilledBySignal(SIGABRT),
              "failed to allocate 536871168 bytes for pawnhash");
}
#endif

}  // namespace
}  // namespace quill::test
