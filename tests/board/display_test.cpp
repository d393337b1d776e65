#include "board/display.h"

#include <gtest/gtest.h>

#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "board/make_move.h"
#include "board/notation.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/random_positions.h"

namespace quill::test {
namespace {

std::string printed(const Board& board) {
  Capture capture;
  printBoard(board, capture.stream());
  return capture.text();
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = text.find('\n', at);
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

// What stands to the right of the diagram, on the lines below the top frame.
std::vector<std::string> historyOf(const Board& board) {
  constexpr std::size_t DiagramWidth = 36;
  std::vector<std::string> history;
  const std::vector<std::string> lines = linesOf(printed(board));
  for (std::size_t i = 2; i < 14; ++i) {
    if (lines[i].size() > DiagramWidth) history.push_back(lines[i].substr(DiagramWidth));
  }
  return history;
}

using Lines = std::vector<std::string>;

TEST(Display, ShowsPiecesHistoryMaterialFenAndKeys) {
  Board board = boardOf(StartFen);
  playMoves(board, "Nf3 Nf6 Ng1 Ng8");
  EXPECT_EQ(printed(board), R"(
   +---+---+---+---+---+---+---+---+
 8 |*r*|*n*|*b*|*q*|*k*|*b*|*n*|*r*|   1. Nf3   Nf6  
   +---+---+---+---+---+---+---+---+   2. Ng1   Ng8  
 7 |*p*|*p*|*p*|*p*|*p*|*p*|*p*|*p*|
   +---+---+---+---+---+---+---+---+
 6 |   |   |   |   |   |   |   |   |
   +---+---+---+---+---+---+---+---+
 5 |   |   |   |   |   |   |   |   |
   +---+---+---+---+---+---+---+---+
 4 |   |   |   |   |   |   |   |   |
   +---+---+---+---+---+---+---+---+
 3 |   |   |   |   |   |   |   |   |
   +---+---+---+---+---+---+---+---+
 2 |(P)|(P)|(P)|(P)|(P)|(P)|(P)|(P)|
   +---+---+---+---+---+---+---+---+
 1 |(R)|(N)|(B)|(Q)|(K)|(B)|(N)|(R)|  40-40=0 
   +---+---+---+---+---+---+---+---+
     a   b   c   d   e   f   g   h

rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 4 3
 hash=f86e725cd0728910
phash=91fc11226777354c
)");
}

TEST(Display, MaterialSummaryNamesTheSurplus) {
  const struct {
    const char* fen;
    const char* summary;
  } cases[] = {
      {"rnb1kbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -", "  40-30=10  Q"},
      {"4k1nr/ppp5/8/8/8/8/P7/QRB1K3 w - -", "  19-11=8  QBnpp"},
      {"4k1n1/8/8/8/8/8/8/2B1K3 w - -", "  3-3=0  Bn"},
      {"qqqqkqqq/qq6/8/8/8/8/8/4K3 w - -", "  0-90=-90  qqqqqqqqq"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(linesOf(printed(boardOf(c.fen)))[16].substr(36), c.summary) << c.fen;
  }
}

// Only with the pawn back on d7 is the other rook shut off, so that the first move needs no file.
TEST(Display, EnPassantInTheHistoryIsTakenBackWhereItHappened) {
  Board board = boardOf("4k3/r2p3r/8/4P3/8/8/8/4K3 b - -");
  playMoves(board, "Rab7 Ke2 d5 exd6");
  EXPECT_EQ(historyOf(board),
            (Lines{"   1. Rb7   Ke2  ", "   2. d5    exd6 ", "   3. ...        "}));
}

TEST(Display, AGameLongerThanTheStacksLooksLikeAnyOther) {
  Board board = boardOf(StartFen);
  EXPECT_EQ(historyOf(board), Lines{});
  for (int i = 0; i < 500; ++i) playMoves(board, "Nf3 Nf6 Ng1 Ng8");
  playMoves(board, "Nf3");
  EXPECT_GT(board.plyOffset, 0);
  const Lines history = historyOf(board);
  ASSERT_EQ(history.size(), 12u);
  EXPECT_EQ(history.front(), "  990. Ng1   Ng8  ");
  EXPECT_EQ(history.back(), "  1001. Nf3   ...  ");
}

TEST(Display, HistoryIsTheMovesAsTheyWerePlayed) {
  RandomPositions random(17);
  for (int game = 0; game < 60; ++game) {
    Board board = boardOf(VariedFens[game % std::size(VariedFens)]);
    Lines sans;
    for (int ply = 0; ply < 60; ++ply) {
      const std::vector<Move> moves = legalMovesOf(board);
      if (moves.empty()) break;
      const bool pass = !board.isInCheck() && random.below(10) == 0;
      const Move move =
          pass ? NoMove : moves[random.below(static_cast<std::uint32_t>(moves.size()))];
      char san[MoveTextSize];
      moveToSan(board, san, move);
      sans.emplace_back(san);
      playMove(board, move);
      updateAttackInfo(board);
      Lines expected = sans;
      if (board.stm == Black) expected.emplace_back("...");
      if (expected.size() > 24) expected.erase(expected.begin(), expected.end() - 24);
      Lines shown;
      for (const std::string& text : historyOf(board)) {
        std::istringstream words(text);
        std::string word;
        for (words >> word; words >> word;) shown.push_back(word);  // without the move number
      }
      ASSERT_EQ(shown, expected) << describe(board);
    }
  }
}

}  // namespace
}  // namespace quill::test
