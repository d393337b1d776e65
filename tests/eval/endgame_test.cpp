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

// A position ready for the rules.
struct Ending {
  explicit Ending(const Board& position) : board(position), evaluator(board, Tables) {
    pawnStructure(evaluator);
  }

  // The rules' word on it when the terms gave this score, White's view.
  Judgement judge(int score) {
    Judgement judgement{false, score, 1024};
    judgement.isExact = endgameRules(evaluator, judgement.score, judgement.scale);
    return judgement;
  }

  Board board;
  Evaluator evaluator;
};

constexpr Judgement Draw{true, 0, 1024};
constexpr Judgement open(int score, int scale = 1024) { return {false, score, scale}; }

TEST(Endgame, RulesJudgePositionsAndTheirMirrorImages) {
  const struct {
    const char* fen;
    int score;
    Judgement judgement;
  } cases[] = {
      // Knight and bishop: with a dark bishop the king is to go to a1, with a light one to h1.
      {"8/8/8/3N4/3BK3/8/8/k7 w - -", 5, {true, 1566, 1024}},
      {"8/8/8/3N4/3BK3/8/8/7k w - -", 5, {true, 1318, 1024}},
      {"8/8/8/3N4/4K3/3B4/8/k7 w - -", 5, {true, 1310, 1024}},
      // Rook and pawn against rook: king before the pawn, rook on the third rank from the goal.
      {"4k3/8/r7/4P3/4K3/8/8/7R w - -", 90, Draw},
      {"4k3/8/8/r3P3/4K3/8/8/7R w - -", 90, open(90)},
      // The pawn far advanced: checks from behind, or the move.
      {"4k3/8/4P3/4K3/8/8/r7/7R w - -", 90, Draw},
      {"4k3/8/r3P3/4K3/8/8/8/7R b - -", 90, Draw},
      {"4k3/8/r3P3/4K3/8/8/8/7R w - -", 90, open(90)},
      // The king is cut off.
      {"8/k7/r7/4P3/4K3/8/8/7R w - -", 90, open(90)},
      // A bishop of the wrong colour only scales, unless the king is in the corner.
      {"k7/8/P7/8/8/8/3B4/4K3 w - -", 300, Draw},
      {"8/8/8/3k4/8/P7/3B4/4K3 w - -", 300, open(300, 128)},
      {"8/8/8/3k4/8/P7/4B3/4K3 w - -", 300, open(300)},
      {"7k/8/7P/8/8/8/4B3/4K3 w - -", 300, Draw},
      {"n7/4k3/8/8/8/P6P/3B4/4K3 w - -", 300, open(300)},
      // Bishops of opposite colours: by the difference of the pawns, two or more.
      {"b3k3/pp6/8/8/8/8/PPPP4/B3K3 w - -", 50, open(50, 341)},
      {"b3k3/pp6/8/8/8/8/PPPPP3/B3K3 w - -", 50, open(50)},
      {"1b2k3/pp6/8/8/8/8/PP6/B3K3 w - -", 50, open(50)},
      // The last pawn may be taken for a piece.
      {"4k3/b7/8/8/8/8/3P4/2B1K3 w - -", 150, open(150, 128)},
      {"4k3/r7/8/8/8/8/3P4/1N2K3 w - -", 150, open(150, 128)},
      {"4k3/r7/8/8/8/8/3P4/1NBRK3 w - -", 150, open(150)},
      {"4k3/b7/8/8/8/8/3PP3/2B1K3 w - -", 150, open(150)},
      // The side without pawns leads, by a minor piece or by more.
      {"4k3/bb6/8/8/8/8/3P4/2B1K3 w - -", -90, open(-90, 128)},
      {"4k3/rr6/8/8/8/8/3P4/2B1K3 w - -", -500, open(-500)},
      // No pawns: knights that win little, bishops on one colour that win nothing.
      {"4k3/8/8/8/8/8/8/1NN1K3 w - -", 600, Draw},
      {"4k3/n7/8/8/8/8/8/NNN1K3 w - -", 605, open(605 / 8)},
      {"4k3/8/8/8/8/8/8/BB2K3 w - -", 700, open(700)},
      {"4k3/8/8/8/8/8/8/B1B1K3 w - -", 700, Draw},
  };
  for (auto [fen, score, judgement] : cases) {
    const Board board = boardOf(fen);
    EXPECT_EQ(Ending(board).judge(score), judgement) << fen;
    judgement.score = -judgement.score;
    EXPECT_EQ(Ending(mirrored(board)).judge(-score), judgement) << fen << ", mirrored";
  }
}

TEST(Endgame, SomeRulesDependOnTheColour) {
  // The first rank counts as behind a white pawn only.
  EXPECT_EQ(Ending(boardOf("4k3/8/4P3/4K3/8/8/8/r6R w - -")).judge(90), Draw);
  EXPECT_EQ(Ending(boardOf("R6r/8/8/8/4k3/4p3/8/4K3 b - -")).judge(-90), open(-90));
  // A leader without pawns that cannot mate: -1 from White's view, whoever leads.
  const Board board = boardOf("4k3/8/3n4/8/8/8/3P4/1N2K3 w - -");
  EXPECT_EQ(Ending(board).judge(-40), (Judgement{true, -1, 1024}));
  EXPECT_EQ(Ending(mirrored(board)).judge(40), (Judgement{true, -1, 1024}));
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
    const RaceCounts counts = pawnRaceCounts(Ending(boardOf(c.fen)).evaluator);
    EXPECT_EQ(counts.moves[White], c.white) << c.fen;
    EXPECT_EQ(counts.moves[Black], c.black) << c.fen;
  }
}

TEST(PawnRace, WhoPromotesFirstByAMoveWins) {
  const struct {
    const char* fen;  // both kings far away, the new queens give no check
    int score;
  } cases[] = {
      {"8/8/8/P6p/8/8/8/1K4k1 w - -", 470},  {"8/8/8/P6p/8/8/8/1K4k1 b - -", 0},
      {"8/8/8/P7/7p/8/8/1K4k1 w - -", 0},    {"8/8/8/P7/8/7p/8/1K4k1 w - -", 0},
      {"8/8/8/P7/8/7p/8/1K4k1 b - -", -480},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(pawnRace(Ending(boardOf(c.fen)).evaluator), c.score) << c.fen;
  }
}

}  // namespace
}  // namespace quill::test
