#include "search/threat.h"

#include <algorithm>

#include "eval/see.h"
#include "search/move_order.h"

namespace quill {

namespace {

constexpr int UnitValue = 100;      // centipawns to an exchange unit
constexpr int ThreatDiscount = 50;  // a threat is not yet a loss
constexpr int ThreatBase = 100;     // and having any is a burden

int threatWorth(int units) { return UnitValue * units - ThreatDiscount; }

// Enemy pawns one step from promotion with a free square ahead.
int promotionThreats(const Board& board, Colour side) {
  if (pieceCount(board.side[side].material) == 0) return 0;
  const Colour enemy = side ^ 1;
  const Bitboard pawns = board.side[enemy].bb[Pawn] & relativeRankMask(side, 1);
  int total = 0;
  for (Bitboard targets = shiftForward(enemy, pawns) & ~board.occupied; targets != 0;) {
    const Square to = popLowest(targets);
    const Square from = enemy == White ? to - 8 : to + 8;
    const int gain = see(board, withPromotion(makeQuiet(from, to), Queen));
    if (gain > 0) total += threatWorth(gain);
  }
  return total;
}

// Rooks and queens that can't leave their line to the king.
int pinThreats(const Board& board, Colour side) {
  const Side& own = board.side[side];
  int total = 0;
  for (Bitboard pinned = (own.bb[Rook] | own.bb[Queen]) & board.blockers[side]; pinned != 0;) {
    const int loss = seeSquare(board, popLowest(pinned));
    if (loss < 0) total += threatWorth(-loss);
  }
  return total;
}

// Of the pieces that enemy pawns attack one can move away: the second dearest is lost.
int forkThreat(const Board& board, Colour side) {
  const Side& own = board.side[side];
  const Side& enemy = board.side[side ^ 1];
  const Bitboard free = enemy.bb[Pawn] & ~board.blockers[side ^ 1];
  Bitboard attacked = pawnSetAttacks(side ^ 1, free) & own.bb[0] & ~own.bb[Pawn];
  if (!moreThanOne(attacked)) return 0;
  int dearest = 0;
  int second = 0;
  while (attacked != 0) {
    const int value = OrderValue[typeOf(board.squares[popLowest(attacked)])];
    second = std::max(second, std::min(dearest, value));
    dearest = std::max(dearest, value);
  }
  return threatWorth(second);
}

}  // namespace

int threatValue(const Board& board, Colour side) {
  const int total =
      promotionThreats(board, side) + pinThreats(board, side) + forkThreat(board, side);
  return total == 0 ? 0 : total + ThreatBase;
}

}  // namespace quill
