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

// endgameRules says nothing where both sides have pawns and pieces and there are more than two
// pieces in all.
bool mayHaveEndgameRule(std::uint32_t white, std::uint32_t black) {
  return pawnCount(white) == 0 || pawnCount(black) == 0 || pieceCount(white) == 0 ||
         pieceCount(black) == 0 || pieceCount(white) + pieceCount(black) <= 2;
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

MaterialTable::MaterialTable() { entries_.fill({0, 0, FullScale, true}); }

const MaterialEntry& MaterialTable::find(const Board& board) {
  const std::uint32_t white = board.side[White].material;
  const std::uint32_t black = board.side[Black].material;
  const std::uint64_t signatures = white | (std::uint64_t{black} << 32);
  // Multiplying by the golden ratio spreads the counts over the top bits.
  MaterialEntry& entry = entries_[(signatures * 0x9E3779B97F4A7C15) >> (64 - IndexBits)];
  if (entry.signatures != signatures) [[unlikely]] {
    int scale = FullScale;
    const int balance = materialBalance(board, scale);
    entry = {signatures, balance, static_cast<std::int16_t>(scale),
             mayHaveEndgameRule(white, black)};
  }
  return entry;
}

}  // namespace quill
