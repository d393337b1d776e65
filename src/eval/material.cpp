#include "eval/material.h"

#include "eval/weights.h"

namespace quill {

namespace {

// What a point of the lead is worth, in units of four centipawns: the fewer pieces the side behind
// still has, the more.
int leadFactor(std::uint32_t behind) {
  return 29 - knightCount(behind) - bishopCount(behind) - rookCount(behind) -
         2 * queenCount(behind);
}

}  // namespace

int materialBalance(const Board& board, int& scale) {
  const std::uint32_t white = board.side[White].material;
  const std::uint32_t black = board.side[Black].material;
  if (white == black) return 0;

  const int pawns = pawnCount(white) + pawnCount(black);
  const int minors =
      knightCount(white) + knightCount(black) + bishopCount(white) + bishopCount(black);
  const int rooks = rookCount(white) + rookCount(black);
  const int queens = queenCount(white) + queenCount(black);
  const int pairs = (bishopCount(white) >= 2 ? 1 : 0) - (bishopCount(black) >= 2 ? 1 : 0);

  // Knights gain with pawns and lose with rooks; bishops gain with minor pieces and lose with
  // pawns; rooks, queens and the bishop pair gain as the board empties.
  int value = 2 * (knightCount(white) - knightCount(black)) * (pawns - 8 - 2 * rooks);
  value += (74 - 4 * (rooks + 3 * queens + minors)) * pairs;
  value += 2 * (bishopCount(white) - bishopCount(black)) * (3 * minors + 4 - pawns);
  value += 4 * (rookCount(white) - rookCount(black)) * (28 - minors - 4 * (queens + rooks) - pawns);
  value += (300 - 8 * minors - 64 * (queens + rooks)) * (queenCount(white) - queenCount(black));
  value += 64 * (pieceCount(white) - pieceCount(black));

  const int lead =
      materialPoints(white) + pawnCount(white) - materialPoints(black) - pawnCount(black);
  if (lead > 0) {
    scale = ScaleByPawns[pawnCount(white)];
    value += 4 * lead * leadFactor(black);
  } else if (lead < 0) {
    scale = ScaleByPawns[pawnCount(black)];
    value += 4 * lead * leadFactor(white);
  }
  return value;
}

}  // namespace quill
