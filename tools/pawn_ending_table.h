// Which positions of king and pawn against king are won, worked out backwards from the wins. The
// evaluation's pawn races are measured against it.
#pragma once

#include <vector>

#include "board/attacks.h"

namespace quill {

// White has the pawn.
struct PawnEnding {
  Square whiteKing;
  Square pawn;  // ranks 2 to 7
  Square blackKing;
  Colour stm;
};

inline bool isLegal(const PawnEnding& e) {
  if (e.whiteKing == e.blackKing || e.whiteKing == e.pawn || e.blackKing == e.pawn) return false;
  if (contains(kingAttacks[e.whiteKing], e.blackKing)) return false;
  return e.stm == Black || !contains(pawnAttacks[White][e.pawn], e.blackKing);
}

class PawnEndingTable {
 public:
  // Requires: initTables was called.
  PawnEndingTable() : won_(Size, false) {
    for (bool isGrowing = true; isGrowing;) {
      isGrowing = false;
      forEachLegal([&](const PawnEnding& e) {
        if (isWon(e) || !(e.stm == White ? whiteCanWin(e) : blackMustLose(e))) return;
        won_[indexOf(e)] = true;
        isGrowing = true;
      });
    }
  }

  bool isWon(const PawnEnding& e) const { return won_[indexOf(e)]; }

  template <typename Visit>
  static void forEachLegal(Visit visit) {
    PawnEnding e;
    for (e.stm = White; e.stm <= Black; ++e.stm)
      for (e.pawn = A2; e.pawn <= H7; ++e.pawn)
        for (e.whiteKing = A1; e.whiteKing <= H8; ++e.whiteKing)
          for (e.blackKing = A1; e.blackKing <= H8; ++e.blackKing)
            if (isLegal(e)) visit(e);
  }

 private:
  static constexpr unsigned Size = 2 * 64 * 64 * 64;

  static unsigned indexOf(const PawnEnding& e) {
    return static_cast<unsigned>(((e.stm * 64 + e.pawn) * 64 + e.whiteKing) * 64 + e.blackKing);
  }

  bool whiteCanWin(PawnEnding e) const {
    e.stm = Black;
    for (Bitboard steps = kingAttacks[e.whiteKing]; steps != 0;) {
      PawnEnding next = e;
      next.whiteKing = popLowest(steps);
      if (isLegal(next) && isWon(next)) return true;
    }
    const Bitboard kings = bit(e.whiteKing) | bit(e.blackKing);
    const Square front = e.pawn + 8;
    if (contains(kings, front)) return false;
    // A new queen wins unless it is lost at once; where it stalemates, a rook wins.
    if (rankOf(front) == 7)
      return !contains(kingAttacks[e.blackKing], front) ||
             contains(kingAttacks[e.whiteKing], front);
    PawnEnding next = e;
    next.pawn = front;
    if (isWon(next)) return true;
    if (rankOf(e.pawn) != 1 || contains(kings, front + 8)) return false;
    next.pawn = front + 8;
    return isWon(next);
  }

  bool blackMustLose(PawnEnding e) const {
    const Bitboard guarded = kingAttacks[e.whiteKing] | pawnAttacks[White][e.pawn];
    Bitboard steps = kingAttacks[e.blackKing] & ~guarded;
    if (steps == 0) return contains(pawnAttacks[White][e.pawn], e.blackKing);
    e.stm = White;
    while (steps != 0) {
      e.blackKing = popLowest(steps);
      if (e.blackKing == e.pawn || !isWon(e)) return false;
    }
    return true;
  }

  std::vector<bool> won_;
};

}  // namespace quill
