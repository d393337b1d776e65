#include "board/board.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

Board startBoard() { return boardOf(StartFen); }

TEST(Board, AddRefusesSquaresOffTheBoard) {
  Board board;
  StreamCapture errors(stderr);
  board.add(White, Queen, 64);
  board.add(White, Queen, -1);
  EXPECT_EQ(errors.text(), "add: illegal piece location: 64\nadd: illegal piece location: -1\n");
  EXPECT_EQ(difference(board, Board()), "");
}

TEST(Board, CopiesAreEqualUpToTheTopOfTheStacks) {
  Board board = startBoard();
  for (int i = 0; i < 200; ++i) playMoves(board, "Nf3 Nf6 Ng1 Ng8");
  const Board copy = board;
  EXPECT_EQ(difference(copy, board), "");
  board = startBoard();
  EXPECT_EQ(difference(board, startBoard()), "");
}

TEST(Board, ConsistencyCheckNoticesEachBrokenField) {
  using Spoil = void (*)(Board&);
  const Spoil spoils[] = {
      [](Board& b) { b.squares[E4] = makeCode(White, Pawn); },
      [](Board& b) { b.squares[E2] = 0; },
      [](Board& b) { b.squares[E2] = 7; },
      [](Board& b) { b.squares[E2] = 8; },
      [](Board& b) { b.side[White].bb[0] ^= bit(E2); },
      [](Board& b) { b.side[Black].bb[Rook] ^= bit(D5); },
      [](Board& b) { b.side[Black].kingSquare = D8; },
      [](Board& b) { b.side[White].material += 0x100; },
      [](Board& b) { b.occupied ^= bit(E4); },
      [](Board& b) { b.key ^= 1; },
      [](Board& b) { b.pawnKey ^= 1; },
      [](Board& b) { b.castling = 0; },
      [](Board& b) { b.epSquare = E4; },
      [](Board& b) { b.stm = 2; },
      [](Board& b) { b.ply = -1; },
  };
  ASSERT_TRUE(isConsistent(startBoard()));
  for (const Spoil& spoil : spoils) {
    Board board = startBoard();
    spoil(board);
    EXPECT_FALSE(isConsistent(board)) << "spoiled by function " << &spoil - spoils;
  }
}

TEST(RebaseStacks, KeepsTheQuietStretchWhateverItsLength) {
  Board full = startBoard();
  for (unsigned i = 0; i < StackSize; ++i) {
    full.moves[i] = i + 1;
    full.keys[i] = i;
  }
  for (int ply : {767, 800, 801, StackSize - 1}) {
    for (int quiet = 0; quiet <= ply; ++quiet) {
      full.ply = ply;
      full.lastIrreversible = ply - quiet;
      Board board = full;
      rebaseStacks(board);
      ASSERT_EQ(board.gamePly(), ply) << quiet;
      ASSERT_EQ(board.quietPlies(), quiet) << ply;
      ASSERT_EQ(board.plyOffset & 1, 0) << ply << ' ' << quiet;
      ASSERT_GE(board.ply, std::clamp(quiet, 24, 512)) << ply << ' ' << quiet;
      ASSERT_LE(board.ply + SearchHeadroom, StackSize) << ply << ' ' << quiet;
      ASSERT_EQ(board.plyOffset == 0, ply + SearchHeadroom < StackSize) << ply << ' ' << quiet;
      // What is left of the stacks are their tops.
      const auto kept = static_cast<std::size_t>(board.ply);
      const auto dropped = static_cast<std::size_t>(board.plyOffset);
      ASSERT_TRUE(std::equal(&board.moves[1], &board.moves[kept] + 1, &full.moves[dropped + 1]));
      ASSERT_TRUE(std::equal(&board.keys[0], &board.keys[kept], &full.keys[dropped]));
    }
  }
}

}  // namespace
}  // namespace quill::test
