// Whether a king can escort its passed pawn to promotion against a king that has no pieces.
#pragma once

#include "board/codes.h"

namespace quill {

// The problem as the pawn's side sees it: the pawn moves up the board.
struct Escort {
  Square pawn;  // passed, on files b to g
  Square king;
  Square enemyKing;
  Bitboard ownPawns;
  Bitboard enemyPawns;
  bool isOwnMove;
};

// The king gives up when it needs more steps than this.
inline constexpr int MaxEscortSteps = 8;

// King steps until the pawn is sure to promote, or more than MaxEscortSteps when it is not.
int escortSteps(const Escort& escort);

}  // namespace quill
