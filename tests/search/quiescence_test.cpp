#include "search/quiescence.h"

#include <gtest/gtest.h>

#include "eval/evaluate.h"
#include "search/params.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/search_kit.h"

namespace quill {
namespace {

using test::moveOf;

constexpr unsigned Cut = CutNode | NullOk | InQuiescence;

class QuiescenceTest : public testing::Test {
 protected:
  void set(const std::string& fen) {
    kit.setPosition(fen);
    kit.clear();
    kit.worker().stats.reset();
  }

  int eval() { return evaluate(kit.worker().evaluator); }
  std::uint64_t qnodes() { return kit.worker().stats.qnodes; }

  // The score at ply 1 with no window that could cut anything off.
  int openScore(const std::string& fen) {
    set(fen);
    return kit.quietScoreAt(1, 0);
  }

  // The score, relative to the evaluation, and the nodes searched, the node itself included, with
  // alpha so far above the evaluation.
  struct Result {
    int gain;
    std::uint64_t nodes;
    bool operator==(const Result&) const = default;
  };
  Result resultAt(const std::string& fen, int above, int checkDepth = 0) {
    set(fen);
    const int value = eval();
    const int score = kit.quietScoreAt(1, checkDepth, value + above, value + above + 1, Cut);
    return {score - value, qnodes()};
  }

  test::SearchKit kit;
};

TEST_F(QuiescenceTest, BoxedInKingAndBlockedPawnsAreStalemate) {
  constexpr char Stalemate[] = "k7/8/1Q6/8/8/p7/P7/7K b - -";
  EXPECT_EQ(openScore(Stalemate), 0);
  EXPECT_NE(openScore("k7/8/1Q6/8/8/p7/8/7K b - -"), 0) << "the pawn can move";
  EXPECT_NE(openScore("k7/8/1Q6/8/8/p7/PP6/7K b - -"), 0) << "the pawn can capture";
  EXPECT_NE(openScore("k7/8/1Q6/8/8/p6n/P7/7K b - -"), 0) << "a piece is left";
}

TEST_F(QuiescenceTest, WhatIsSearchedDependsOnWhatIsMissing) {
  const struct {
    const char* name;
    const char* fen;
    int above;
    int checkDepth;
    bool isLeaf;
  } cases[] = {
      {"queen takes a guarded pawn", "6k1/5ppp/4p3/3p4/8/8/3Q1PPP/6K1 w - -", 0, 0, true},
      {"an even exchange", "6k1/5ppp/2n5/3n4/5N2/8/5PPP/6K1 w - -", 0, 0, false},
      {"a knight is too little", "1r4k1/5ppp/8/3n4/2P5/B7/5PPP/R5K1 w - -", 500, 0, true},
      {"a knight is enough", "1r4k1/5ppp/8/3n4/2P5/B7/5PPP/R5K1 w - -", 499, 0, false},
      {"a bishop is enough", "1r4k1/5ppp/8/3b4/2P5/B7/5PPP/R5K1 w - -", 499, 0, false},
      {"a pawn about to promote", "1r4k1/3n1ppp/8/8/8/8/p4PPP/R5K1 w - -", 1199, 0, false},
      {"an endgame: one enemy piece", "6k1/5ppp/8/3n4/2P5/8/5PPP/R5K1 w - -", 1200, 0, false},
      {"no quiet check at depth 0", "6k1/5pp1/7p/8/1r6/8/4QPPP/6K1 w - -", 0, 0, true},
      {"a quiet check that wins a rook", "6k1/5pp1/7p/8/1r6/8/4QPPP/6K1 w - -", 0, 1, false},
      {"a quiet check, first ply", "6k1/5pp1/7p/8/1r6/8/4QPPP/6K1 w - -", 0, 2, false},
      {"quiet evasions far below", "6k1/5ppp/8/8/8/7P/8/r5K1 w - -", 51, 0, true},
      {"quiet evasions not far enough", "6k1/5ppp/8/8/8/7P/8/r5K1 w - -", 50, 0, false},
      {"the only evasion", "6k1/5ppp/8/8/8/7P/5PP1/r5K1 w - -", 5000, 0, false},
      {"far ahead: mate on the back rank", "3r2k1/5ppp/8/8/8/8/Q4PPP/6K1 w - -", -100, 2, false},
      {"far ahead: no threat", "3r2k1/5ppp/8/8/8/7P/Q4PP1/6K1 w - -", -100, 2, true},
      {"far ahead: a fork", "6k1/5ppp/8/8/2p5/1N1N4/5PPP/6K1 w - -", -100, 2, false},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(resultAt(c.fen, c.above, c.checkDepth).nodes == 1, c.isLeaf) << c.name;
  }
  // What is left out is accounted for by a slack.
  constexpr char Knight[] = "1r4k1/5ppp/8/3n4/2P5/B7/5PPP/R5K1 w - -";
  EXPECT_EQ(resultAt(Knight, 1200), (Result{1150, 1})) << "nothing is tried";
  EXPECT_EQ(resultAt(Knight, 1199), (Result{1149, 1})) << "queens only; there is none";
  EXPECT_EQ(resultAt("6k1/5ppp/8/8/8/7P/8/r5K1 w - -", 51), (Result{50, 1}));
}

TEST_F(QuiescenceTest, MateInOneIsLookedForOnlyInsideQuiescenceOrAfterACapture) {
  constexpr char Fen[] = "6k1/5ppp/8/8/8/8/1qr2PPP/3R2K1 w - -";
  set(Fen);
  EXPECT_EQ(kit.quietScoreAt(4, 0, 100, 101, Cut), 30000 - 5);
  set(Fen);
  EXPECT_LT(kit.quietScoreAt(4, 0, 100, 101, CutNode), 101);
  set(Fen);
  kit.board().moves[kit.board().ply] = makeCapture(makeSquare(0, 0), makeSquare(1, 1), 1);
  EXPECT_EQ(kit.quietScoreAt(4, 0, 100, 101, CutNode), 30000 - 5);
}

TEST_F(QuiescenceTest, TableEntryOfItsDepthDecides) {
  set(test::QuietFen);
  const Move move = moveOf(kit.board(), "c4f7");
  const auto isCut = [&](int bound, int depth, int score, unsigned flags, int checkDepth) {
    set(test::QuietFen);
    kit.tt.storeScore(kit.worker(), bound, depth, 1, score, move, 0);
    return kit.quietScoreAt(1, checkDepth, 900, 901, flags) == score && qnodes() == 1;
  };
  EXPECT_TRUE(isCut(LowerBound, 0, 950, Cut, 2));
  EXPECT_FALSE(isCut(LowerBound, -1, 950, Cut, 2)) << "searched with fewer checks";
  EXPECT_TRUE(isCut(LowerBound, -1, 950, Cut, 1));
  EXPECT_TRUE(isCut(UpperBound, -2, 800, Cut, 0));
  EXPECT_FALSE(isCut(UpperBound, 5, 800, PvNode | InQuiescence, 2));
  EXPECT_TRUE(isCut(LowerBound | StaticCut, 0, 950, CutNode | InQuiescence, 2));
}

}  // namespace
}  // namespace quill
