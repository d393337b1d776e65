#include "shell/move_history.h"

#include "board/make_move.h"

namespace quill {

void MoveHistory::play(Board& board, Move move) {
  if (!knows(board)) entries_.clear();
  rebaseStacks(board);
  Entry entry{board, move, board.gamePly() + 1, board.key, 0};
  entry.undo.lastIrreversible += board.plyOffset;
  playMove(board, move);
  updateAttackInfo(board);
  entry.keyAfter = board.key;
  entries_.push_back(entry);
}

bool MoveHistory::takeBack(Board& board) {
  if (!knows(board)) return false;
  Entry& entry = entries_.back();
  entry.undo.lastIrreversible -= board.plyOffset;
  if (entry.move == NoMove) {
    unmakeNullMove(board, entry.undo);
  } else {
    unmakeMove(board, entry.move, entry.undo);
  }
  entries_.pop_back();
  return true;
}

bool MoveHistory::knows(const Board& board) const {
  if (entries_.empty() || board.ply == 0) return false;
  const Entry& last = entries_.back();
  const auto ply = static_cast<std::size_t>(board.ply);
  return last.gamePly == board.gamePly() && last.keyAfter == board.key &&
         last.move == board.moves[ply] && last.keyBefore == board.keys[ply - 1];
}

}  // namespace quill
