// The king's shelter in the middlegame, its activity in the endgame, and the attack on it.
#pragma once

#include <array>

#include "board/attacks.h"
#include "board/board.h"

namespace quill {

struct Evaluator;

// The square, or the nearest one that is not on the edge of the board.
constexpr Square kingFront(Square square) {
  const int file = fileOf(square);
  const int rank = rankOf(square);
  return makeSquare(file == 0 ? 1 : file == 7 ? 6 : file, rank == 0 ? 1 : rank == 7 ? 6 : rank);
}

// The nine squares at a king on which attacks count, by its square.
inline constexpr std::array<Bitboard, 64> KingZones = [] {
  std::array<Bitboard, 64> zones{};
  for (Square king = 0; king < 64; ++king)
    zones[static_cast<unsigned>(king)] = grow(bit(kingFront(king)));
  return zones;
}();
inline Bitboard kingZone(Square king) { return KingZones[static_cast<unsigned>(king)]; }

// One colour's pieces against the enemy king: knights that reach its zone, and every bishop, rook
// and queen. It stays empty for a colour that has not the material to attack.
struct AttackRecord {
  int count = 0;   // pieces
  int weight = 0;  // by kind of piece, and by the squares of the zone in its safe attacks
};

// Whether the colour has the material for an attack on the enemy king.
inline bool canAttackKing(const Board& board, Colour colour) {
  constexpr int AttackerPoints = 12;  // material points that are not enough yet
  return materialPoints(board.side[colour].material) > AttackerPoints;
}

// The king's value, that colour's view, centipawns; leaves its shelter in Evaluator::shelter.
// Requires: Evaluator::pawnEntry is the board's.
int kingShelter(Evaluator& evaluator, Colour colour);

// What the colour's attack on the enemy king is worth, that colour's view, centipawns; it grows
// with the square of the danger, and is 0 for a colour that has not the material to attack.
// Requires: Evaluator::shelter of the other colour is the board's.
int kingAttack(const Evaluator& evaluator, Colour colour, const AttackRecord& attack);

}  // namespace quill
