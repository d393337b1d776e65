#include "support/random_positions.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <iterator>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "support/positions.h"

namespace quill::test {

RandomPositions::RandomPositions(std::uint64_t seed) : random_(seed) {
  std::printf("random positions with seed %llu\n", static_cast<unsigned long long>(seed));
}

std::uint32_t RandomPositions::below(std::uint32_t bound) { return bits() % bound; }

void RandomPositions::startGame() {
  const char* fen = VariedFens[game_++ % std::size(VariedFens)];
  if (!setFen(board_, fen)) ADD_FAILURE() << fen;
  pliesLeft_ = 20 + static_cast<int>(below(100));
}

Board& RandomPositions::next() {
  if (pliesLeft_-- == 0) {
    startGame();
    return board_;
  }
  Move list[MaxMoves];
  const auto moves = static_cast<std::uint32_t>(generateLegal(board_, list) - list);
  if (moves == 0) {
    startGame();
    return board_;
  }
  makeMove(board_, list[below(moves)]);
  updateAttackInfo(board_);
  return board_;
}

void damage(std::string& text, RandomPositions& random, std::uint32_t most,
            const std::string& letters) {
  for (std::uint32_t changes = random.below(most + 1); changes > 0; --changes) {
    const std::size_t at = random.below(static_cast<std::uint32_t>(text.size() + 1));
    const std::uint32_t kind = random.below(8);
    std::string with(kind < 2 ? 0 : 1, static_cast<char>(random.below(256)));
    if (kind > 2) with[0] = letters[random.below(static_cast<std::uint32_t>(letters.size()))];
    text.replace(at, random.below(3), with);
  }
}

std::string describe(const Board& board) {
  char move[MoveTextSize];
  moveToText(board, move, board.moves[static_cast<unsigned>(board.ply)]);
  return std::string(getFen(board).text()) + " after " + move;
}

}  // namespace quill::test
