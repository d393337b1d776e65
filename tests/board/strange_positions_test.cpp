// Positions that no game reaches but a FEN can claim, and texts that are hardly FEN at all:
// everything on the board stays defined and consistent. At its best under the sanitizers.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "board/display.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/random_positions.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

constexpr const char* StrangeFens[] = {
    // The side not to move is in check.
    "4k3/8/8/8/8/8/4R3/4K3 w - -",
    "rnbqkbnr/ppppp1pp/8/5p1Q/4P3/8/PPPP1PPP/RNB1KBNR w KQkq -",
    "k7/1P6/8/8/8/8/8/K7 w - -",
    "7k/5N2/8/8/8/8/8/K7 w - -",
    // Both are.
    "4k3/4r3/8/8/8/8/4R3/4K3 w - -",
    "k6R/8/8/8/8/8/8/K6r w - -",
    // Kings side by side, alone and with a checker.
    "8/8/8/3kK3/8/8/8/8 w - -",
    "8/8/8/3kK3/8/8/8/Q3r3 w - -",
    "8/8/3p4/3kK3/2P1P3/8/8/8 b - -",
    // En passant claimed: nothing there, the mover's pawn, a piece, a king, before a double check.
    "4k3/8/8/8/8/8/8/4K3 w - e4",
    "4k3/8/8/3PpP2/8/8/8/4K3 b - e5",
    "4k3/8/8/3PnP2/8/8/8/4K3 w - e5",
    "8/8/8/3PkP2/8/8/8/4K3 w - e5",
    "4k3/4r3/8/3PpP2/8/8/8/4K3 w - e6",
    "4k3/8/4N3/3PpP2/8/8/8/4K3 w - e6",
    "b3k3/8/8/3PpP2/4K3/8/8/8 w - e6",
    "7k/8/8/r2PpP1K/8/8/8/8 w - e6",
    "7k/q7/8/3PpP2/3K4/8/8/4r3 w - e6",
    "4k3/8/8/8/8/8/8/4K2R w K h1",
    // A check that en passant would block although the pawn does not give it.
    "5b1k/8/8/3pP3/1K6/8/8/8 w - d6",
    // Nine queens, ten knights; no moves at all.
    "qqqqkqqq/qq6/8/8/8/8/QQ6/QQQQKQQQ w - -",
    "nnnnknnn/nnn5/8/8/8/8/NNN5/NNNNKNNN b - -",
    "k7/8/8/8/8/5n1p/5p1P/5B1K w - -",
    "8/8/8/8/8/pppppppp/PPPPPPPP/k6K w - -",
    "4k3/PPPPPPPP/8/8/8/8/pppppppp/4K3 w - -",
    "4k3/pppppppp/8/8/8/8/PPPPPPPP/4K3 b - -",
};

// Without en passant, where a claim may describe what no double step can leave behind.
std::vector<Move> sortedWithoutEnPassant(std::vector<Move> moves) {
  std::erase_if(moves, isEnPassant);
  std::sort(moves.begin(), moves.end());
  return moves;
}

// Calls everything that takes a position and checks what must hold for any that setFen accepts.
void exercise(Board& board, RandomPositions& random, int depth) {
  SCOPED_TRACE(describe(board));
  ASSERT_TRUE(isConsistent(board));
  const std::vector<Move> moves = legalMovesOf(board);
  const Board before = board;
  ASSERT_EQ(sortedWithoutEnPassant(moves), sortedWithoutEnPassant(slowLegalMoves(board)));
  std::vector<Move> doubtful = {random.bits()};
  for (const Move move : moves) doubtful.push_back(move ^ (1u << random.below(32)));
  for (const Move move : doubtful)
    ASSERT_EQ(isLegalMove(board, move), isOneOf(moves, move)) << move;
  if (!board.isInCheck()) {
    for (const Move move : capturesOf(board)) ASSERT_TRUE(isLegalMove(board, move)) << move;
  }
  const UndoInfo undo = board;
  for (const Move move : moves) {
    ASSERT_TRUE(isLegalMove(board, move)) << move;
    ASSERT_NE(capturedType(move), King);
    makeMove(board, move);
    updateAttackInfo(board);
    ASSERT_TRUE(isConsistent(board)) << move;
    ASSERT_FALSE(contains(attacksBy(board, board.stm), board.enemy().kingSquare)) << move;
    if (depth > 0 && random.below(16) == 0) exercise(board, random, depth - 1);
    unmakeMove(board, move, undo);
    ASSERT_EQ(difference(board, before), "") << move;
  }
  char text[MoveTextSize];
  moveToText(board, text, random.bits());
  moveToSan(board, text, moves.empty() ? random.bits() : moves[0]);
  const Move parsed = parseMove(board, text);
  if (!moves.empty()) {
    ASSERT_EQ(parsed, moves[0]) << text;
  }
}

// Reads the text. True when it is accepted; then it must survive everything.
bool tryText(const std::string& text, RandomPositions& random) {
  SCOPED_TRACE(text);
  Board board = boardOf(KiwipeteFen);
  parseMove(board, text.c_str());
  if (!setFen(board, text.c_str())) return false;
  exercise(board, random, 1);
  const Board again = boardOf(getFen(board).text());
  EXPECT_EQ(again.key, board.key);
  EXPECT_EQ(again.squares, board.squares);
  if (random.below(50) == 0) {
    Capture capture;
    printBoard(board, capture.stream());
    EXPECT_NE(capture.text().find(getFen(board).text()), std::string::npos);
  }
  return true;
}

std::string pick(RandomPositions& random, const std::string& letters) {
  return letters.substr(random.below(static_cast<std::uint32_t>(letters.size())), 1);
}

// Kings and men anywhere, any rights, any en-passant square.
std::string randomPlacement(RandomPositions& random) {
  std::string squares(64, '1');
  const auto put = [&](char letter) {
    const std::uint32_t square = random.below(64);
    const bool lastRank = square < 8 || square >= 56;
    if (squares[square] == '1' && !(lastRank && (letter | 32) == 'p')) squares[square] = letter;
  };
  for (std::uint32_t men = random.below(30); men > 0; --men)
    put(pick(random, "PPPPPNBRQpppppnbrq")[0]);
  squares[random.below(32)] = 'K';
  squares[32 + random.below(32)] = 'k';
  if (random.below(4) == 0) squares = std::string(squares.rbegin(), squares.rend());
  if (random.below(4) == 0) {  // a chance for castling
    std::replace(squares.begin(), squares.end(), 'K', '1');
    squares[56] = squares[63] = 'R';
    squares[60] = 'K';
    squares[61] = squares[62] = '1';
  }
  std::string fen;
  for (std::size_t rank = 0; rank < 8; ++rank) fen.append(squares, 8 * rank, 8).push_back('/');
  fen.pop_back();
  fen += random.below(2) == 0 ? " w " : " b ";
  fen += random.below(2) == 0 ? "- " : "KQkq ";
  if (random.below(4) == 0) return fen + '-';
  return fen + pick(random, "abcdefgh") + pick(random, "3456345612345678");
}

// What the random text is made of: nothing, a position of a game or a strange one.
std::string randomBase(RandomPositions& random) {
  switch (random.below(6)) {
    case 0:
      return "";
    case 1:
      return VariedFens[random.below(std::size(VariedFens))];
    case 2:
      return StrangeFens[random.below(std::size(StrangeFens))];
    default:
      return randomPlacement(random);
  }
}

TEST(StrangePositions, ChosenOnesAreSafe) {
  RandomPositions random(71);
  const StreamCapture errors(stderr);
  for (const char* fen : StrangeFens) {
    for (int i = 0; i < 50; ++i) ASSERT_TRUE(tryText(fen, random)) << fen;
  }
}

TEST(StrangePositions, RandomTextsAreReadSafely) {
  RandomPositions random(72);
  const StreamCapture errors(stderr);
  int accepted = 0;
  for (int i = 0; i < 2 * PropertyPositions; ++i) {
    std::string text = randomBase(random);
    damage(text, random, 5, "KQRBNPkqrbnp/12345678 wb-abcdefgh09\t");
    if (tryText(text, random)) ++accepted;
    ASSERT_FALSE(HasFailure()) << text;
  }
  EXPECT_GT(accepted, PropertyPositions / 4);
}

}  // namespace
}  // namespace quill::test
