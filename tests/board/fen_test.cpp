#include "board/fen.h"

#include <gtest/gtest.h>

#include <string>

#include "board/make_move.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/reference.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

struct Reading {
  bool accepted;
  std::string errors;  // what was written to standard error
  std::string fen;     // getFen afterwards
};

// Reads the text into a Board that holds the start position after 1. e4.
Reading readFen(const char* text) {
  Board board = boardOf(StartFen);
  makeMove(board, makeQuiet(E2, E4) | DoubleStepFlag);
  const Board before = board;
  StreamCapture errors(stderr);
  const bool accepted = setFen(board, text);
  if (!accepted) {
    EXPECT_EQ(difference(board, before), "");
  }
  return {accepted, errors.text(), getFen(board).text()};
}

TEST(Fen, ReferencePositionsAreReadAndWritten) {
  forEachReference([](const Board& board, const auto& reference) {
    EXPECT_EQ(getFen(board).text(), reference["getFen"].template get<std::string>());
    EXPECT_EQ(board.key, parseHex(reference["key"]));
    EXPECT_EQ(board.pawnKey, parseHex(reference["pawnKey"]));
    EXPECT_EQ(board.castling, reference["castling"]);
    EXPECT_EQ(board.epSquare, reference["epSquare"]);
    EXPECT_EQ(board.stm, reference["stm"]);
    EXPECT_EQ(board.enemyAttacks, parseHex(reference["enemyAttacks"]));
    EXPECT_EQ(board.isInCheck(), reference["check"]);
    for (const unsigned colour : {0u, 1u}) {
      EXPECT_EQ(board.side[colour].material, parseHex(reference["material"][colour]));
      EXPECT_EQ(board.blockers[colour], parseHex(reference["blockers"][colour]));
    }
    EXPECT_TRUE(isConsistent(board));
  });
}

TEST(Fen, FieldsMayBeMissingAndNameTheEnPassantPawnOrTheSquareBehindIt) {
  const struct {
    const char* text;
    const char* fen;
  } cases[] = {
      {StartPosition, StartFen},
      {"4k3/8/8/8/8/8/8/4K3", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
      {"4k/////PPP5//4K", "4k3/8/8/8/8/PPP5/8/4K3 w - - 0 1"},
      {"4k/8/4K b", "4k3/8/4K3/8/8/8/8/8 b - - 0 1"},
      {"r3k2r/8/8/8/8/8/8/R3K2R   b   qK  ", "r3k2r/8/8/8/8/8/8/R3K2R b Kq - 0 1"},
      {"4k3/8/8/8/4P3/8/8/4K3 b - e", "4k3/8/8/8/4P3/8/8/4K3 b - - 0 1"},
      {"4k3/8/8/8/8/8/8/4K3/ w - - 77 99", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
      {"4k3/8/8/8/3pP3/8/8/4K3 b - e3", "4k3/8/8/8/3pP3/8/8/4K3 b - e4 0 1"},
      {"4k3/8/8/8/3pP3/8/8/4K3 b - e4 0 1", "4k3/8/8/8/3pP3/8/8/4K3 b - e4 0 1"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "4k3/8/8/3pP3/8/8/8/4K3 w - d5 0 1"},
      // Behind a "-" for the rights, too.
      {"r3k3/8/8/3pP3/8/8/8/4K3 w -d6", "r3k3/8/8/3pP3/8/8/8/4K3 w - d5 0 1"},
      {"r3k3/8/8/3pP3/8/8/8/4K3 w q- d6", "r3k3/8/8/3pP3/8/8/8/4K3 w q d5 0 1"},
  };
  for (const auto& c : cases) EXPECT_EQ(readFen(c.text).fen, c.fen) << c.text;
}

TEST(Fen, RightsNeedKingAndRookAtHome) {
  const Reading reading = readFen("r3k2r/8/8/8/8/8/8/R3K3 w KQkq -");
  EXPECT_TRUE(reading.accepted);
  EXPECT_EQ(reading.errors, "castling K invalid\n");
  EXPECT_EQ(reading.fen, "r3k2r/8/8/8/8/8/8/R3K3 w Qkq - 0 1");
  EXPECT_EQ(readFen("r2k3r/8/8/8/8/8/8/r3K2R w QqkK -").errors,
            "castling Q invalid\ncastling q invalid\ncastling k invalid\n");
}

TEST(Fen, BadTextsAreRefusedWithOneLine) {
  const struct {
    const char* text;
    const char* error;
  } cases[] = {
      {"", "fen: not exactly 1 king for side 0\n"},
      {"4k3/8/8/8/8/8/8/3KK3 w - -", "fen: not exactly 1 king for side 0\n"},
      {"8/8/8/8/8/8/8/3K4 w - -", "fen: not exactly 1 king for side 1\n"},
      {"4k3/8/8/8/8/8/8/4K3/8 w - -", "fen too long\n"},
      {"4k3/x7/8/8/8/8/8/4K3 w - -", "fen: invalid input for a7: x\n"},
      {"4k3/8/3p0p2/8/8/8/8/4K3 w - -", "fen: invalid input for e6: 0\n"},
      {"4k3/8/8/9/8/8/8/4K3 w - -", "fen: invalid input for a5: 9\n"},
      {"4k3/8/8/8/8/8/8/4K3\tw - -", "fen: invalid input for i1: \t\n"},
      // Ranks of more than eight squares.
      {"rnbqkbnrr/8/8/8/8/8/8/4K3 w - -", "fen: invalid input for i8: r\n"},
      {"4k3/8/1n7P/8/8/8/8/4K3 w - -", "fen: invalid input for c6: 7\n"},
      {"4k3/81/8/8/8/8/8/4K3 w - -", "fen: invalid input for i7: 1\n"},
      // Pawns where none can stand.
      {"4k2P/8/8/8/8/8/8/4K3 w - -", "fen: invalid input for h8: P\n"},
      {"4k3/8/8/8/8/8/8/p3K3 w - -", "fen: invalid input for a1: p\n"},
      // More men than a game can give.
      {"4k3/8/8/8/8/P7/PPPPPPPP/4K3 w - -", "fen: impossible material for side 0\n"},
      {"3qk3/q7/pppppppp/8/8/8/8/4K3 w - -", "fen: impossible material for side 1\n"},
      {"4k3/NNNNNNNN/NNN5/8/8/8/8/4K3 w - -", "fen: impossible material for side 0\n"},
      {"4k3/8/8/8/8/8/8/4K3 x - -", "fen: invalid stm: x\n"},
      {"4k3/8/8/8/8/8/8/4K3 w X -", "setFen(): illegal castling char: X\n"},
      {"4k3/8/8/8/8/8/8/4K3 white", "setFen(): illegal castling char: h\n"},
  };
  for (const auto& bad : cases) {
    const Reading reading = readFen(bad.text);
    EXPECT_FALSE(reading.accepted) << bad.text;
    EXPECT_EQ(reading.errors, bad.error) << bad.text;
  }
  for (const char* field : {"a1", "a0", "e9", "i4", "`5", "E4", "44", "e ", "0 1"}) {
    const Reading reading = readFen(("4k3/8/8/8/3pP3/8/8/4K3 b - " + std::string(field)).c_str());
    EXPECT_FALSE(reading.accepted) << field;
    EXPECT_EQ(reading.errors, "setFen() invalid ep square\n") << field;
  }
  EXPECT_FALSE(readFen(nullptr).accepted);
}

TEST(Fen, SettingAPositionForgetsTheGame) {
  Board board = boardOf(StartFen);
  makeMove(board, makeQuiet(G1, F3));
  ASSERT_TRUE(setFen(board, StartFen));
  EXPECT_EQ(difference(board, boardOf(StartFen)), "");
}

}  // namespace
}  // namespace quill::test
