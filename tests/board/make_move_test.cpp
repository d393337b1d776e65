#include "board/make_move.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "support/play.h"
#include "support/random_positions.h"
#include "support/reference.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

TEST(MakeMove, ReferenceMovesLeadToTheReferencePositions) {
  forEachReference([](Board& board, const auto& reference) {
    const UndoInfo undo = board;
    std::size_t i = 0;
    for (const Move move : movesIn(reference["bits"])) {
      makeMove(board, move);
      updateAttackInfo(board);
      std::ostringstream fields;
      fields << std::hex << board.key << ':' << board.pawnKey << ':' << int{board.castling} << ':'
             << int{board.epSquare} << ':' << board.quietPlies() << ':'
             << board.side[White].material << ':' << board.side[Black].material << ':'
             << board.enemyAttacks;
      EXPECT_EQ(fields.str(), reference["after"][i++]) << std::hex << " move " << move;
      unmakeMove(board, move, undo);
    }
  });
}

TEST(UpdateAttackInfo, AgreesWithTheSlowRules) {
  RandomPositions positions(4);
  for (int i = 0; i < PropertyPositions; ++i) {
    const Board& board = positions.next();
    const Bitboard attacks = slowAttacks(board.squares, board.stm ^ 1);
    ASSERT_EQ(board.enemyAttacks, attacks) << describe(board);
    for (const Colour colour : {White, Black}) {
      ASSERT_EQ(board.blockers[static_cast<unsigned>(colour)], slowBlockers(board.squares, colour))
          << describe(board);
      ASSERT_EQ(attacksBy(board, colour), slowAttacks(board.squares, colour)) << describe(board);
    }
  }
}

// A right outlives a move when king and rook still stand at home.
std::uint8_t rightsAfter(const Board& before, const Board& after) {
  unsigned rights = before.castling;
  for (const Colour colour : {White, Black}) {
    for (const Wing wing : {ShortWing, LongWing}) {
      const CastleInfo& info = CastleTable[colour][wing];
      const bool atHome = after.squares[info.kingFrom] == makeCode(colour, King) &&
                          after.squares[info.rookFrom] == makeCode(colour, Rook);
      if (!atHome) rights &= ~((wing == ShortWing ? 1u : 4u) << colour);
    }
  }
  return static_cast<std::uint8_t>(rights);
}

Square epSquareAfter(const Board& after, Move move) {
  if ((move & DoubleStepFlag) == 0) return 0;
  for (const int side : {-1, 1}) {
    const Square beside = toOf(move) + side;
    const bool onRank = rankOf(beside) == rankOf(toOf(move));
    if (onRank && after.squares[beside] == makeCode(after.stm, Pawn)) return toOf(move);
  }
  return 0;
}

void expectRightAfterMove(const Board& before, const Board& after, Move move) {
  ASSERT_EQ(after.squares, slowSquaresAfter(before.squares, move));
  ASSERT_TRUE(isConsistent(after));  // sets, signatures and keys are those of the squares
  ASSERT_EQ(keyAfter(before, move), after.key);
  ASSERT_EQ(after.stm, before.stm ^ 1);
  ASSERT_EQ(after.castling, rightsAfter(before, after));
  ASSERT_EQ(after.epSquare, epSquareAfter(after, move));
  const bool quiet = capturedOf(move) == 0 && typeOf(before.squares[fromOf(move)]) != Pawn;
  ASSERT_EQ(after.quietPlies(), quiet ? before.quietPlies() + 1 : 0);
  ASSERT_EQ(after.ply, before.ply + 1);
  ASSERT_EQ(after.moves[after.ply], move);
  ASSERT_EQ(after.keys[before.ply], before.key);
}

TEST(MakeMove, EveryFieldIsRightAndTakenBack) {
  RandomPositions positions(1);
  for (int i = 0; i < PropertyPositions; ++i) {
    Board& board = positions.next();
    const std::vector<Move> moves = legalMovesOf(board);
    const Board before = board;
    const UndoInfo undo = board;
    for (const Move move : moves) {
      makeMove(board, move);
      expectRightAfterMove(before, board, move);
      unmakeMove(board, move, undo);
      ASSERT_EQ(difference(board, before), "");
      ASSERT_FALSE(HasFailure()) << describe(before) << std::hex << " move " << move;
    }
  }
}

TEST(MakeMove, NullMovePassesTheTurnAndIsTakenBack) {
  RandomPositions positions(6);
  for (int i = 0; i < PropertyPositions / 10; ++i) {
    Board& board = positions.next();
    const Board before = board;
    const UndoInfo undo = board;
    makeNullMove(board);
    ASSERT_TRUE(isConsistent(board)) << describe(before);
    ASSERT_EQ(board.squares, before.squares);
    ASSERT_EQ(keyAfter(before, NoMove), board.key) << describe(before);
    ASSERT_EQ(board.stm, before.stm ^ 1);
    ASSERT_EQ(board.castling, before.castling);
    ASSERT_EQ(board.quietPlies(), 0);
    ASSERT_EQ(board.epSquare, 0) << describe(before);
    ASSERT_EQ(board.moves[static_cast<unsigned>(board.ply)], NoMove);
    unmakeNullMove(board, undo);
    ASSERT_EQ(difference(board, before), "") << describe(before);
  }
}

}  // namespace
}  // namespace quill::test
