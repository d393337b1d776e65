// Playing a line of moves on a board, to be taken back as a whole.
#pragma once

#include <array>
#include <cassert>
#include <span>

#include "board/make_move.h"
#include "search/params.h"

namespace quill {

// Takes all its moves back when it goes out of scope. Null moves (0) may be among them.
class LineWalk {
 public:
  explicit LineWalk(Board& board) : board_(board) {}
  LineWalk(const LineWalk&) = delete;
  LineWalk& operator=(const LineWalk&) = delete;
  ~LineWalk() {
    while (size_ > 0) {
      --size_;
      if (moves_[size_] == NoMove) {
        unmakeNullMove(board_, undo_[size_]);
      } else {
        unmakeMove(board_, moves_[size_], undo_[size_]);
      }
    }
  }

  // Plays one more move, or several; the attack information is valid afterwards.
  // Requires: not more than MaxSearchPly moves in all.
  void play(Move move) { replayMoves({&move, 1}); }
  void replayMoves(std::span<const Move> moves) {
    assert(size_ + static_cast<int>(moves.size()) <= MaxSearchPly);
    for (const Move move : moves) {
      undo_[size_] = board_;
      moves_[size_++] = move;
      playMove(board_, move);
    }
    updateAttackInfo(board_);
  }

  int size() const { return size_; }

 private:
  Board& board_;
  int size_ = 0;
  std::array<Move, MaxSearchPly> moves_;
  std::array<UndoInfo, MaxSearchPly> undo_;
};

}  // namespace quill
