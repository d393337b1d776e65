// The moves played by hand, so that they can be taken back.
#pragma once

#include <vector>

#include "board/board.h"

namespace quill {

// What a Board does not keep of earlier positions: the last move on top. When the board has been
// set or played on by others, what is known of it no longer counts.
class MoveHistory {
 public:
  // Plays the move, or passes the turn for NoMove, as part of a game of any length.
  // Requires: the move is legal; valid attack information.
  void play(Board& board, Move move);

  // Takes the last move back; the board is as it was before it, attack information included.
  // On failure: false, and nothing changes: the board's last move was not played here, or it was
  // so long ago that the board's stacks have forgotten the position before it.
  bool takeBack(Board& board);

 private:
  struct Entry {
    UndoInfo undo;            // of the position before the move; plies as Board::gamePly counts
    Move move;                // NoMove for a turn passed
    int gamePly;              // after the move
    std::uint64_t keyBefore;  // of the board
    std::uint64_t keyAfter;
  };

  // Whether the last entry led to the board's position.
  bool knows(const Board& board) const;

  std::vector<Entry> entries_;
};

}  // namespace quill
