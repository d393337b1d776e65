// Endings by their rule: what the board's pawns and pieces alone decide.
#include "eval/endgame.h"

#include <gtest/gtest.h>

#include "eval/evaluate.h"
#include "eval/pawn_race.h"
#include "eval/pawns.h"
#include "support/mirror.h"
#include "support/play.h"

namespace quill::test {
namespace {

const EvalTables Tables;

struct Judgement {
  bool isExact;
  int score;
  int scale;
  bool operator==(const Judgement&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Judgement& j) {
  return out << (j.isExact ? "exact " : "") << j.score << ", scale " << j.scale;
}

// The rules' word on a position that the terms gave this score, White's view.
Judgement judge(const Board& board, int score) {
  Evaluator evaluator(board, Tables);
  pawnStructure(evaluator);
  Judgement judgement{false, score, 1024};
  judgement.isExact = endgameRules(evaluator, judgement.score, judgement.scale);
  return judgement;
}

// Both the position and its mirror image must be judged so.
void expectJudgement(const char* fen, int score, Judgement expected) {
  const Board board = boardOf(fen);
  EXPECT_EQ(judge(board, score), expected) << fen;
  expected.score = -expected.score;
  EXPECT_EQ(judge(mirrored(board), -score), expected) << fen << ", mirrored";
}

constexpr Judgement Draw{true, 0, 1024};
constexpr Judgement open(int score, int scale = 1024) { return {false, score, scale}; }

TEST(Endgame, KnightAndBishopDriveTheKingToTheBishopsCorner) {
  // Dark bishop: a1 is the goal, h1 as far from it as can be; a light one reverses them.
  expectJudgement("8/8/8/3N4/3BK3/8/8/k7 w - -", 5, {true, 1600 - 8 * 4 - 1 - 1, 1024});
  expectJudgement("8/8/8/3N4/3BK3/8/8/7k w - -", 5, {true, 1600 - 32 * 8 - 8 * 3 - 1 - 1, 1024});
  expectJudgement("8/8/8/3N4/4K3/3B4/8/k7 w - -", 5, {true, 1600 - 32 * 8 - 8 * 4 - 1 - 1, 1024});
}

TEST(Endgame, RookAndPawnAgainstRookIsDrawnByTheKnownDefences) {
  // King before the pawn, rook on the third rank from the promotion side.
  expectJudgement("4k3/8/r7/4P3/4K3/8/8/7R w - -", 90, Draw);
  expectJudgement("4k3/8/8/r3P3/4K3/8/8/7R w - -", 90, open(90));
  // The pawn far advanced: checks from behind, or the move.
  expectJudgement("4k3/8/4P3/4K3/8/8/r7/7R w - -", 90, Draw);
  expectJudgement("4k3/8/r3P3/4K3/8/8/8/7R b - -", 90, Draw);
  expectJudgement("4k3/8/r3P3/4K3/8/8/8/7R w - -", 90, open(90));
  // The king is cut off.
  expectJudgement("8/k7/r7/4P3/4K3/8/8/7R w - -", 90, open(90));
  // The first rank counts as behind a white pawn only.
  EXPECT_EQ(judge(boardOf("4k3/8/4P3/4K3/8/8/8/r6R w - -"), 90), Draw);
  EXPECT_EQ(judge(boardOf("R6r/8/8/8/4k3/4p3/8/4K3 b - -"), -90), open(-90));
}

TEST(Endgame, ABishopOfTheWrongColourOnlyScales) {
  expectJudgement("k7/8/P7/8/8/8/3B4/4K3 w - -", 300, Draw);
  expectJudgement("8/8/8/3k4/8/P7/3B4/4K3 w - -", 300, open(300, 128));
  expectJudgement("8/8/8/3k4/8/P7/4B3/4K3 w - -", 300, open(300));
  expectJudgement("7k/8/7P/8/8/8/4B3/4K3 w - -", 300, Draw);
  expectJudgement("n7/4k3/8/8/8/P6P/3B4/4K3 w - -", 300, open(300));
  expectJudgement("k7/8/PP6/8/8/8/3B4/4K3 w - -", 300, open(300));
}

TEST(Endgame, BishopsOfOppositeColoursScaleByThePawnDifference) {
  const char* const minors = "b3k3/pp6/8/8/8/8/";
  const auto position = [&](const char* pawns) {
    return std::string(minors) + pawns + "/B3K3 w - -";
  };
  expectJudgement(position("PP6").c_str(), 50, open(50, 256));
  expectJudgement(position("PPP5").c_str(), 50, open(50, 512));
  expectJudgement(position("PPPP4").c_str(), 50, open(50, 341));
  expectJudgement(position("PPPPP3").c_str(), 50, open(50));
  expectJudgement("1b2k3/pp6/8/8/8/8/PP6/B3K3 w - -", 50, open(50));
}

TEST(Endgame, TheLastPawnMayBeTakenForAPiece) {
  expectJudgement("4k3/b7/8/8/8/8/3P4/2B1K3 w - -", 150, open(150, 128));
  expectJudgement("4k3/r7/8/8/8/8/3P4/1N2K3 w - -", 150, open(150, 128));
  expectJudgement("4k3/r7/8/8/8/8/3P4/1NBRK3 w - -", 150, open(150));
  expectJudgement("4k3/b7/8/8/8/8/3PP3/2B1K3 w - -", 150, open(150));
  // The side without pawns leads, by little or by much.
  expectJudgement("4k3/r7/8/8/8/8/3P4/2B1K3 w - -", -90, open(-90, 128));
  expectJudgement("4k3/rr6/8/8/8/8/3P4/2B1K3 w - -", -500, open(-500));
}

TEST(Endgame, ALeaderWithoutPawnsThatCannotMateWinsNothing) {
  // -1 from White's view, whoever leads.
  for (const char* fen : {"4k3/8/3n4/8/8/8/3P4/1N2K3 w - -", "4k3/8/2nn4/8/8/8/3P4/4K1N1 w - -"}) {
    EXPECT_EQ(judge(boardOf(fen), -40), (Judgement{true, -1, 1024})) << fen;
    EXPECT_EQ(judge(mirrored(boardOf(fen)), 40), (Judgement{true, -1, 1024})) << fen;
  }
  expectJudgement("4k3/8/8/8/8/8/8/1NN1K3 w - -", 600, Draw);
}

TEST(Endgame, WithoutPawnsTheLeadDecides) {
  expectJudgement("4k3/8/8/8/8/8/8/Q3K3 w - -", 900, open(1900));
  expectJudgement("4k3/r7/8/8/8/8/8/Q3K3 w - -", 500, open(1400));
  expectJudgement("4k3/n7/8/8/8/8/8/NNN1K3 w - -", 605, open(605 / 8));
  expectJudgement("4k3/8/8/8/8/8/8/BB2K3 w - -", 700, open(700));
  expectJudgement("4k3/8/8/8/8/8/8/B1B1K3 w - -", 700, Draw);
  expectJudgement("4k3/r7/8/8/8/8/8/2B1K3 w - -", -200, open(-200, 256));
  expectJudgement("4k3/r7/8/8/8/8/8/R3K3 w - -", 20, open(20, 64));
  expectJudgement("4k3/n7/8/8/8/8/8/BB2K3 w - -", 300, open(300));
}

TEST(PawnRace, CountsMovesOrNone) {
  const struct {
    const char* fen;
    int white;
    int black;
  } cases[] = {
      {"7k/8/8/P7/8/8/8/7K w - -", 3 - 1, NoRace},      // alone; the new queen checks
      {"8/3k4/8/P7/8/8/8/7K w - -", NoRace, NoRace},    // inside the square
      {"8/8/4k3/P7/8/8/8/7K w - -", 3, NoRace},         // one file outside it
      {"8/8/4k3/P7/8/8/8/7K b - -", NoRace, NoRace},    // its move brings it inside
      {"8/8/8/8/6k1/8/P7/7K w - -", 6, NoRace},         // the double step outruns the king
      {"8/8/8/1n6/P7/8/8/K6k b - -", NoRace, NoRace},   // the knight takes care of it
      {"K7/8/P7/8/8/8/7k/8 w - -", 3, NoRace},          // the own king must step aside
      {"k1K5/8/P7/8/8/8/8/8 w - -", NoRace, NoRace},    // no escort for a rook pawn
      {"8/2K5/k7/4P3/8/8/8/8 w - -", 3, NoRace},        // the king is not needed
      {"4k3/8/3K4/4P3/8/8/8/8 w - -", 1 + 3, NoRace},   // the king goes ahead first
      {"4k3/8/4K3/4P3/8/8/8/8 b - -", 3, NoRace},       // it is there: sixth rank before the pawn
      {"8/4k3/8/4K3/4P3/8/8/8 w - -", NoRace, NoRace},  // the enemy has the opposition
      // A king with pawns may have waiting moves: only the guarded path counts.
      {"8/5k2/2K5/4P2p/7P/8/8/8 w - -", 1 + 3, NoRace},
      {"4k3/8/3K4/4P2p/7P/8/8/8 w - -", NoRace, NoRace},
      {"8/4k3/8/8/P6P/8/8/4K3 w - -", 14 - 3 - 3, NoRace},  // two pawns too far apart
      {"8/4k3/8/8/3PP3/8/8/1K6 w - -", NoRace, NoRace},     // two that one king holds
      {"8/5P2/8/k6p/8/8/8/K7 w - -", 1, 4 - 1},
  };
  for (const auto& c : cases) {
    const Board board = boardOf(c.fen);
    Evaluator evaluator(board, Tables);
    pawnStructure(evaluator);
    const RaceCounts counts = pawnRaceCounts(evaluator);
    EXPECT_EQ(counts.moves[White], c.white) << c.fen;
    EXPECT_EQ(counts.moves[Black], c.black) << c.fen;
  }
}

TEST(PawnRace, WhoPromotesFirstByAMoveWins) {
  const auto race = [](const char* fen) {
    const Board board = boardOf(fen);
    Evaluator evaluator(board, Tables);
    pawnStructure(evaluator);
    return pawnRace(evaluator);
  };
  // Both kings are far away, the new queens give no check.
  EXPECT_EQ(race("8/8/8/P6p/8/8/8/1K4k1 w - -"), 500 - 30);
  EXPECT_EQ(race("8/8/8/P6p/8/8/8/1K4k1 b - -"), 0);
  EXPECT_EQ(race("8/8/8/P7/7p/8/8/1K4k1 w - -"), 0);
  EXPECT_EQ(race("8/8/8/P7/8/7p/8/1K4k1 w - -"), 0);
  EXPECT_EQ(race("8/8/8/P7/8/7p/8/1K4k1 b - -"), -(500 - 20));
}

}  // namespace
}  // namespace quill::test
