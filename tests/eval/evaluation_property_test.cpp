// What must hold for the evaluation of every position.
#include <gtest/gtest.h>

#include "board/fen.h"
#include "eval/evaluate.h"
#include "eval/see.h"
#include "support/mirror.h"
#include "support/random_positions.h"

namespace quill::test {
namespace {

const EvalTables Tables;

int freshScore(const Board& board) {
  Evaluator evaluator(board, Tables);
  return evaluate(evaluator);
}

// Exchanges on the square before a passed pawn take the first of equal capturers in square order,
// which the mirror reverses; now and then that decides whether the step loses the pawn.
bool hasSquareBoundExchange(const Board& board, const Board& mirror) {
  for (const Colour c : {White, Black}) {
    for (Bitboard pawns = board.side[c].bb[Pawn]; pawns != 0;) {
      const Square from = popLowest(pawns);
      const Square to = c == White ? from + 8 : from - 8;
      if (contains(board.occupied, to)) continue;
      const int promotion = relativeRank(c, to) == 7 ? Queen : NoPiece;
      const int gain = see(board, withPromotion(makeQuiet(from, to), promotion));
      const int mirrorGain = see(mirror, withPromotion(makeQuiet(from ^ 56, to ^ 56), promotion));
      if ((gain < 0) != (mirrorGain < 0)) return true;
    }
  }
  return false;
}

// The two rules that the evaluation knows for one colour only.
bool isColourBound(const Board& board, int whiteView) {
  if (whiteView == -1) return true;
  const std::uint32_t white = board.side[White].material;
  const std::uint32_t black = board.side[Black].material;
  const std::uint32_t rook = MaterialIncrement[Rook];
  const std::uint32_t rookAndPawn = rook + MaterialIncrement[Pawn];
  const Bitboard edge = rankMask(0) | rankMask(7);
  if (white == rookAndPawn && black == rook) return (board.side[Black].bb[Rook] & edge) != 0;
  if (black == rookAndPawn && white == rook) return (board.side[White].bb[Rook] & edge) != 0;
  return false;
}

// True when the position shows why it may differ from its mirror image.
bool expectMirrors(const Board& position) {
  const Board mirror = mirrored(position);
  const Board board = mirrored(mirror);  // the position itself, without its history
  const int score = freshScore(board);
  const int mirrorScore = freshScore(mirror);
  EXPECT_LE(std::abs(score), MaxEvaluation) << getFen(board).text();
  if (score == mirrorScore) return false;
  const int whiteView = board.stm == White ? score : -score;
  const int mirrorWhiteView = mirror.stm == White ? mirrorScore : -mirrorScore;
  EXPECT_TRUE(isColourBound(board, whiteView) || isColourBound(mirror, mirrorWhiteView) ||
              hasSquareBoundExchange(board, mirror))
      << getFen(board).text() << ": " << score << ", mirrored " << mirrorScore;
  return true;
}

TEST(EvaluationSlow, PositionsMirrorUnderColourExchange) {
  RandomPositions random(20240607);
  int boundInGames = 0;
  int boundInEndings = 0;
  for (int i = 0; i < PropertyPositions && !HasFailure(); ++i) {
    boundInGames += expectMirrors(random.next()) ? 1 : 0;
    boundInEndings += expectMirrors(sparsePosition(random)) ? 1 : 0;
  }
  EXPECT_LT(boundInGames, PropertyPositions / 100) << "the exceptions hide too much";
  EXPECT_LT(boundInEndings, PropertyPositions / 10) << "the exceptions hide too much";
}

// One Evaluator that lives through all positions, its caches filling and overflowing, against a new
// one for each position.
template <typename NextPosition>
void expectCachesChangeNothing(NextPosition next) {
  Board board;
  Evaluator evaluator(board, Tables);
  resizePawnHash(evaluator.pawnHash, 256);
  for (int i = 0; i < PropertyPositions && !testing::Test::HasFailure(); ++i) {
    board = next();
    board.lastIrreversible = board.ply;  // caches do not know the fifty-move count
    const int first = evaluate(evaluator);
    EXPECT_EQ(evaluate(evaluator), first) << describe(board);
    EXPECT_EQ(freshScore(board), first) << describe(board);
  }
  EXPECT_GT(evaluator.pawnHash.hits, 0u);
}

TEST(EvaluationSlow, CachesChangeNoResult) {
  RandomPositions random(5150);
  expectCachesChangeNothing([&]() -> const Board& { return random.next(); });
  expectCachesChangeNothing([&] { return sparsePosition(random); });
}

}  // namespace
}  // namespace quill::test
