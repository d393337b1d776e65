#include "board/board.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "board/fen.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/slow_rules.h"

namespace quill::test {
namespace {

Board startBoard() { return boardOf(StartFen); }

// Knights go to and fro.
void playShuffle(Board& board, int plies) {
  constexpr const char* Cycle[] = {"Nf3", "Nf6", "Ng1", "Ng8", "Nc3", "Nc6", "Nb1", "Nb8"};
  for (int i = 0; i < plies; ++i) playMoves(board, Cycle[board.gamePly() % 8]);
}

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
  playShuffle(board, 7);
  const Board copy = board;
  EXPECT_EQ(difference(copy, board), "");
  Board other = startBoard();
  playShuffle(board, 800);
  other = board;
  EXPECT_EQ(difference(other, board), "");
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

// The moves and keys that both boards still have must agree, counted from the top.
void expectSameRecentHistory(const Board& a, const Board& b, int plies) {
  for (int back = 0; back < plies; ++back) {
    const auto i = static_cast<unsigned>(a.ply - back);
    const auto k = static_cast<unsigned>(b.ply - back);
    ASSERT_EQ(a.moves[i], b.moves[k]) << back;
    if (back > 0) {
      ASSERT_EQ(a.keys[i], b.keys[k]) << back;
    }
  }
}

TEST(RebaseStacks, AGameMayBeOfAnyLength) {
  Board board = startBoard();
  for (int ply = 0; ply < 5000; ++ply) {
    const Board before = board;
    playShuffle(board, 1);
    ASSERT_EQ(board.gamePly(), ply + 1);
    ASSERT_EQ(board.ply & 1, (ply + 1) & 1);
    ASSERT_LE(board.ply + SearchHeadroom, StackSize);
    ASSERT_EQ(board.plyOffset & 1, 0);
    ASSERT_TRUE(isConsistent(board));
    if (board.plyOffset == before.plyOffset) continue;
    ASSERT_GE(before.ply + SearchHeadroom, StackSize) << "there was room yet";
    // The quiet stretch is longer than anything that is kept.
    ASSERT_EQ(board.quietPlies(), before.quietPlies() + 1);
    ASSERT_GE(board.ply, 24);
    Board undone = board;
    --undone.ply;
    expectSameRecentHistory(undone, before, std::min({undone.ply, before.ply, 500}));
  }
  EXPECT_STREQ(getFen(board).text(),
               "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 5000 2501");
}

TEST(RebaseStacks, KeepsTheQuietStretchWhateverItsLength) {
  Board full = startBoard();
  for (unsigned i = 0; i < StackSize; ++i) {
    full.moves[i] = i + 1;
    full.keys[i] = i;
  }
  for (int ply : {800, 801, StackSize - 1}) {
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
      expectSameRecentHistory(board, full, board.ply);
    }
  }
}

}  // namespace
}  // namespace quill::test
