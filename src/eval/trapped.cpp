#include "eval/trapped.h"

#include "eval/evaluator.h"

namespace quill {

namespace {

// A white piece's square, that of the black pawn that traps it, and the price in centipawns.
struct Trap {
  Square piece;
  Square pawn;
  int price;
};

constexpr Trap KnightTraps[] = {{A8, C7, 250}, {H8, F7, 250}, {B8, B7, 250}, {G8, G7, 250}};
constexpr Trap BishopTraps[] = {{A7, B6, 150}, {H7, G6, 150}, {A6, B5, 100}, {H6, G5, 100}};

constexpr int ShutInRook = 45;

// Where a piece can be trapped: almost always empty.
template <Colour Us, std::size_t Count>
constexpr Bitboard squaresOf(const Trap (&traps)[Count]) {
  Bitboard squares = 0;
  for (const Trap& trap : traps) squares |= bit(relativeSquare(Us, trap.piece));
  return squares;
}

template <Colour Us, std::size_t Count>
int priceOf(Bitboard pieces, Bitboard enemyPawns, const Trap (&traps)[Count]) {
  int price = 0;
  for (const Trap& trap : traps) {
    if (contains(pieces, relativeSquare(Us, trap.piece)) &&
        contains(enemyPawns, relativeSquare(Us, trap.pawn)))
      price += trap.price;
  }
  return price;
}

// A king near the corner and a rook on the wrong side of it, behind an own pawn. The files are the
// corner's own and the next one.
template <Colour Us>
bool isShutIn(const Side& side, Square king1, Square king2, int cornerFile, int nextFile) {
  if (side.kingSquare != relativeSquare(Us, king1) && side.kingSquare != relativeSquare(Us, king2))
    return false;
  const Bitboard inCorner =
      fileMask(cornerFile) & (relativeRankMask(Us, 0) | relativeRankMask(Us, 1));
  const Bitboard nextToIt = fileMask(nextFile) & relativeRankMask(Us, 0);
  return ((side.bb[Rook] & inCorner) != 0 && (side.bb[Pawn] & fileMask(cornerFile)) != 0) ||
         ((side.bb[Rook] & nextToIt) != 0 && (side.bb[Pawn] & fileMask(nextFile)) != 0);
}

template <Colour Us>
int trappedPrice(const Board& board) {
  const Side& side = board.side[Us];
  const Bitboard enemyPawns = board.side[Us ^ 1].bb[Pawn];
  constexpr Bitboard KnightSquares = squaresOf<Us>(KnightTraps);
  constexpr Bitboard BishopSquares = squaresOf<Us>(BishopTraps);
  int price = 0;
  if ((side.bb[Knight] & KnightSquares) != 0)
    price += priceOf<Us>(side.bb[Knight], enemyPawns, KnightTraps);
  if ((side.bb[Bishop] & BishopSquares) != 0)
    price += priceOf<Us>(side.bb[Bishop], enemyPawns, BishopTraps);
  if (isShutIn<Us>(side, B1, C1, 0, 1)) price += ShutInRook;
  if (isShutIn<Us>(side, F1, G1, 7, 6)) price += ShutInRook;
  return price;
}

}  // namespace

int trappedPieces(const Evaluator& evaluator) {
  return trappedPrice<Black>(evaluator.board) - trappedPrice<White>(evaluator.board);
}

}  // namespace quill
