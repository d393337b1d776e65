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
  int openScore(const std::string& fen, int checkDepth = 0) {
    set(fen);
    return kit.quietScoreAt(1, checkDepth);
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
  std::uint64_t nodesOf(const std::string& fen, int checkDepth = 0) {
    return resultAt(fen, 0, checkDepth).nodes;
  }

  test::SearchKit kit;
};

TEST_F(QuiescenceTest, MateIsSeenInCheck) {
  EXPECT_EQ(openScore("7k/6Q1/6K1/8/8/8/8/8 b - -"), -29999);
  set("7k/6Q1/6K1/8/8/8/8/8 b - -");
  EXPECT_EQ(kit.quietScoreAt(9, 0, 0, 1, Cut), -29991);
}

TEST_F(QuiescenceTest, QuietPositionScoresItsEvaluation) {
  set("6k1/5ppp/8/8/8/8/5PPP/6K1 w - -");
  const int value = eval();
  EXPECT_EQ(kit.quietScoreAt(1, 2), value);
  EXPECT_EQ(qnodes(), 1u);
}

TEST_F(QuiescenceTest, BoxedInKingAndBlockedPawnsAreStalemate) {
  constexpr char Stalemate[] = "k7/8/1Q6/8/8/p7/P7/7K b - -";
  EXPECT_EQ(openScore(Stalemate), 0);
  EXPECT_NE(openScore("k7/8/1Q6/8/8/p7/8/7K b - -"), 0) << "the pawn can move";
  EXPECT_NE(openScore("k7/8/1Q6/8/8/p7/PP6/7K b - -"), 0) << "the pawn can capture";
  EXPECT_NE(openScore("k7/8/1Q6/8/8/p6n/P7/7K b - -"), 0) << "a piece is left";
}

TEST_F(QuiescenceTest, HangingPieceIsTaken) {
  set("6k1/5ppp/8/3r4/4P3/8/5PPP/6K1 w - -");
  const int value = eval();
  EXPECT_GT(kit.quietScoreAt(1, 0), value + 300);
  EXPECT_EQ(kit.worker().pv[1][0], moveOf(kit.board(), "e4d5"));
}

TEST_F(QuiescenceTest, OnlyCapturesThatMayLoseAreWeighed) {
  EXPECT_EQ(nodesOf("6k1/5ppp/4p3/3p4/8/8/3Q1PPP/6K1 w - -"), 1u) << "queen takes a guarded pawn";
  EXPECT_EQ(nodesOf("6k1/5ppp/2n5/3n4/5N2/8/5PPP/6K1 w - -"), 2u) << "an even exchange";
}

TEST_F(QuiescenceTest, WindowFarAboveLeavesOnlyGreatCaptures) {
  // White is to take a pawn, a knight or a rook; the enemy has pieces enough.
  constexpr char Fen[] = "1r4k1/5ppp/8/3n4/2P5/B7/5PPP/R5K1 w - -";
  // Need above 1199: nothing is tried, though the knight hangs.
  EXPECT_EQ(resultAt(Fen, 1200), (Result{1150, 1}));
  // Need up to 1199: queens only; there is none.
  EXPECT_EQ(resultAt(Fen, 1199), (Result{1149, 1}));
  // Need up to 499: the knight is worth it.
  EXPECT_EQ(resultAt(Fen, 500).nodes, 1u);
  EXPECT_GT(resultAt(Fen, 499).nodes, 1u);
}

TEST_F(QuiescenceTest, PawnAboutToPromoteIsTakenHoweverFarBehind) {
  EXPECT_GT(resultAt("1r4k1/3n1ppp/8/8/8/8/p4PPP/R5K1 w - -", 1199).nodes, 1u);
}

TEST_F(QuiescenceTest, NoDeltaPruningInAnEndgame) {
  // The enemy has one piece only.
  const Result result = resultAt("6k1/5ppp/8/3n4/2P5/8/5PPP/R5K1 w - -", 1200);
  EXPECT_GT(result.gain, 1150 - 1000);
  EXPECT_GT(result.nodes, 1u) << "the capture was tried";
}

TEST_F(QuiescenceTest, QuietHashMoveIsSearchedToo) {
  constexpr char Fen[] = "6k1/5pp1/7p/8/8/8/3R1PPP/6K1 w - -";
  EXPECT_EQ(nodesOf(Fen), 1u);
  set(Fen);
  const int value = eval();
  kit.tt.storeScore(kit.worker(), LowerBound, -2, 1, value - 50, moveOf(kit.board(), "d2d1"),
                    value);
  kit.quietScoreAt(1, 0, value, value + 1, Cut);
  EXPECT_GT(qnodes(), 1u);
}

TEST_F(QuiescenceTest, MateInOneIsPlayedAtANodeThatWouldFailLow) {
  // Far behind in material, and the mate is a quiet move.
  set("6k1/5ppp/8/8/8/8/1qr2PPP/3R2K1 w - -");
  EXPECT_EQ(kit.quietScoreAt(4, 0, 100, 101, Cut), 30000 - 5);
}

TEST_F(QuiescenceTest, MateInOneIsLookedForOnlyInsideQuiescenceOrAfterACapture) {
  constexpr char Fen[] = "6k1/5ppp/8/8/8/8/1qr2PPP/3R2K1 w - -";
  set(Fen);
  EXPECT_LT(kit.quietScoreAt(4, 0, 100, 101, CutNode), 101);
  set(Fen);
  kit.board().moves[kit.board().ply] = makeCapture(makeSquare(0, 0), makeSquare(1, 1), 1);
  EXPECT_EQ(kit.quietScoreAt(4, 0, 100, 101, CutNode), 30000 - 5);
}

TEST_F(QuiescenceTest, ChecksAreTriedInTheFirstTwoPlies) {
  // No capture, but a check that wins the rook.
  constexpr char Fen[] = "6k1/5pp1/7p/8/1r6/8/4QPPP/6K1 w - -";
  EXPECT_EQ(nodesOf(Fen, 0), 1u);
  EXPECT_GT(nodesOf(Fen, 1), 1u);
  EXPECT_GT(nodesOf(Fen, 2), 1u);
}

TEST_F(QuiescenceTest, QuietEvasionsAreLeftOutFarBelowAlpha) {
  constexpr char Fen[] = "6k1/5ppp/8/8/8/7P/8/r5K1 w - -";
  EXPECT_EQ(resultAt(Fen, 51), (Result{50, 1}));
  EXPECT_GT(resultAt(Fen, 50).nodes, 1u) << "not far enough";
  // The only evasion is always searched.
  EXPECT_GT(resultAt("6k1/5ppp/8/8/8/7P/5PP1/r5K1 w - -", 5000).nodes, 1u);
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

TEST_F(QuiescenceTest, ThreatenedSideDoesNotTrustItsEvaluation) {
  const auto nodesFarAhead = [this](const char* fen) { return resultAt(fen, -100, 2).nodes; };
  EXPECT_GT(nodesFarAhead("3r2k1/5ppp/8/8/8/8/Q4PPP/6K1 w - -"), 1u) << "mate on the back rank";
  EXPECT_EQ(nodesFarAhead("3r2k1/5ppp/8/8/8/7P/Q4PP1/6K1 w - -"), 1u) << "no threat";
  EXPECT_GT(nodesFarAhead("6k1/5ppp/8/8/2p5/1N1N4/5PPP/6K1 w - -"), 1u) << "a fork";
}

}  // namespace
}  // namespace quill
