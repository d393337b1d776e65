#include "board/perft.h"

#include <span>

#include "board/make_move.h"
#include "board/movegen.h"

namespace quill {

std::uint64_t perft(Board& board, int depth) {
  if (depth < 2) return static_cast<std::uint64_t>(countLegal(board));
  Move list[MaxMoves];
  const std::span moves(list, generateLegal(board, list));
  const UndoInfo undo = board;
  std::uint64_t leaves = 0;
  for (const Move move : moves) {
    makeMove(board, move);
    leaves += perft(board, depth - 1);
    unmakeMove(board, move, undo);
  }
  return leaves;
}

}  // namespace quill
