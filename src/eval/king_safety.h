// The king's shelter in the middlegame, its activity in the endgame, and the attack on it.
#pragma once

#include <algorithm>
#include <array>

#include "board/attacks.h"
#include "board/board.h"
#include "eval/evaluator.h"
#include "eval/weights.h"

namespace quill {

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
inline int kingAttack(const Evaluator& evaluator, Colour colour, const AttackRecord& attack) {
  const Board& board = evaluator.board;
  if (!canAttackKing(board, colour)) return 0;
  const Square king = board.side[colour ^ 1].kingSquare;
  const Bitboard pawnAttacked =
      pawnSetAttacks(colour, board.side[colour].bb[Pawn]) & kingZone(king);

  // Free of branches, for they would all be hard to foresee.
  const int pawns = (pawnAttacked != 0 ? 1 : 0) + (moreThanOne(pawnAttacked) ? 1 : 0);
  const int attackers = attack.count + (pawnAttacked != 0 ? 1 : 0);
  const int danger = 2 * attack.weight + 2 * pawns +
                     4 * KingSquarePenalty[tableIndex(colour ^ 1, king)] -
                     evaluator.shelter[static_cast<unsigned>(colour ^ 1)] + 8 * attackers +
                     (board.stm == colour ? 4 : 0);

  // A quarter of the danger, none when it is below 0.
  const std::int64_t level = std::max(danger, 0) / 4;
  const std::int64_t weight = evaluator.tables.weights[KingAttack];
  return static_cast<int>((weight * 5 * level * level) >> 16);
}

}  // namespace quill
