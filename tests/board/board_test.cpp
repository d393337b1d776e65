#include "board/board.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "board/fen.h"
#include "board/make_move.h"
#include "support/capture.h"
#include "support/play.h"
#include "support/positions.h"
#include "support/slow_rules.h"

namespace quill {
namespace {

Board startBoard() { return test::boardOf(test::StartFen); }

// Knights go to and fro, as they do in a game that began so many plies late.
void playShuffle(Board& board, int plies, int late = 0) {
  constexpr Move Cycle[] = {makeQuiet(G1, F3), makeQuiet(G8, F6), makeQuiet(F3, G1),
                            makeQuiet(F6, G8), makeQuiet(B1, C3), makeQuiet(B8, C6),
                            makeQuiet(C3, B1), makeQuiet(C6, B8)};
  for (int i = 0; i < plies; ++i) {
    rebaseStacks(board);
    makeMove(board, Cycle[(board.gamePly() - late) % 8]);
  }
  updateAttackInfo(board);
}

TEST(Board, AddRefusesSquaresOffTheBoard) {
  Board board;
  test::StreamCapture errors(stderr);
  board.add(White, Queen, 64);
  board.add(White, Queen, -1);
  EXPECT_EQ(errors.text(), "add: illegal piece location: 64\nadd: illegal piece location: -1\n");
  EXPECT_EQ(test::difference(board, Board()), "");
}

TEST(Board, CopiesAreEqualUpToTheTopOfTheStacks) {
  Board board = startBoard();
  playShuffle(board, 7);
  const Board copy = board;
  EXPECT_EQ(test::difference(copy, board), "");
  Board other = startBoard();
  playShuffle(board, 800);
  other = board;
  EXPECT_EQ(test::difference(other, board), "");
}

TEST(Board, ConsistencyCheckNoticesEachBrokenField) {
  const Board sound = startBoard();
  ASSERT_TRUE(isConsistent(sound));
  const auto isBroken = [&](auto&& spoil) {
    Board board = sound;
    spoil(board);
    return !isConsistent(board);
  };
  EXPECT_TRUE(isBroken([](Board& b) { b.squares[E4] = makeCode(White, Pawn); }));
  EXPECT_TRUE(isBroken([](Board& b) { b.squares[E2] = 0; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.squares[E2] = 7; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.squares[E2] = 8; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.side[White].bb[0] ^= bit(E2); }));
  EXPECT_TRUE(isBroken([](Board& b) { b.side[Black].bb[Rook] ^= bit(D5); }));
  EXPECT_TRUE(isBroken([](Board& b) { b.side[Black].kingSquare = D8; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.side[White].material += 0x100; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.occupied ^= bit(E4); }));
  EXPECT_TRUE(isBroken([](Board& b) { b.key ^= 1; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.pawnKey ^= 1; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.castling = 0; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.epSquare = E4; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.stm = 2; }));
  EXPECT_TRUE(isBroken([](Board& b) { b.ply = -1; }));
}

TEST(RebaseStacks, DoesNothingWhileThereIsRoom) {
  Board board = startBoard();
  playShuffle(board, 300);
  const Board before = board;
  rebaseStacks(board);
  EXPECT_EQ(test::difference(board, before), "");
  EXPECT_EQ(board.plyOffset, 0);
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
}  // namespace quill
