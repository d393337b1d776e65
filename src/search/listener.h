// The one small interface through which a search tells of its progress. The protocol implements it
// for a GUI; tests record it.
#pragma once

#include "board/move.h"

namespace quill {

// All operations are called on the search's master thread, never two at a time.
class SearchListener {
 public:
  virtual ~SearchListener() = default;

  // Before a root move is searched: the iteration's depth, the move's place counted from 0.
  virtual void reportCurrentMove(int depth, int moveIndex, Move move) = 0;

  // A root move got a new principal variation, or the first one failed low. The score is in
  // centipawns, side to move's view; the line itself is in the RootMoveList.
  virtual void reportPv(int depth, int score, Move move) = 0;

  // Once at the end of every search, with the last iteration's depth and the best root move, which
  // is 0 when there is no legal move.
  virtual void searchFinished(int depth, int score, Move move) = 0;
};

}  // namespace quill
