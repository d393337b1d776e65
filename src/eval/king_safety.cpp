#include "eval/king_safety.h"

#include <algorithm>

#include "eval/evaluator.h"
#include "eval/pawns.h"

namespace quill {

namespace {

// Below this many material points of the opponent, the king is a fighting piece.
constexpr int EndgamePoints = 16;
// Danger below this counts as none. The opponent then has no queen and at most 17 points.
constexpr int SlightDanger = 10;
constexpr int WalkSteps = 6;  // how far an endgame king looks for enemy pawns

// The king's place and the enemy pawns that it can walk to. A pawn d steps away counts 7 - d times.
template <Colour Us>
int endgameKing(const Board& board, int opponentPoints) {
  constexpr Colour Them = Us ^ 1;
  const Square king = board.side[Us].kingSquare;
  const Bitboard enemyPawns = board.side[Them].bb[Pawn];

  int reached = 0;
  if (enemyPawns != 0) {
    const Bitboard walkable = ~(kingAttacks[board.side[Them].kingSquare] | board.side[Us].bb[Pawn] |
                                pawnSetAttacks(Them, enemyPawns));
    Bitboard region = bit(king);
    for (int step = 0; step < WalkSteps; ++step) {
      region = grow(region) & walkable;
      reached += count(region & enemyPawns);
    }
  }
  const int place = KingCentre[tableIndex(Us, king)] / 2;
  return (place + 4 * reached) * EndgameKingWeight[opponentPoints] / 32;
}

// Shelter points of the king where it stands.
int standingShelter(const Evaluator& evaluator, Colour colour) {
  const Board& board = evaluator.board;
  const Square king = board.side[colour].kingSquare;
  const auto& stored = evaluator.pawnEntry->side[colour].shelter;
  const int file = fileOf(king);

  int shelter;
  if (file == 3)
    shelter = shelterAt(board, colour, relativeSquare(colour, D1));
  else
    shelter = stored[file < 3 ? ShelterB : file == 4 ? ShelterE : ShelterG];
  if (contains(board.side[colour].bb[Bishop], kingFront(king))) shelter += 1;
  return shelter - KingSquarePenalty[tableIndex(colour, king)];
}

// Shelter points that castling on a wing would give: those of the wing, less a cost for the move
// and for each piece still in the way, and a point for a bishop fianchettoed there.
int castledShelter(const Evaluator& evaluator, Colour colour, Wing wing) {
  const Board& board = evaluator.board;
  const auto& stored = evaluator.pawnEntry->side[colour].shelter;
  const Bitboard inTheWay = board.occupied & CastleTable[colour][wing].emptyMask;
  const Square fianchetto = relativeSquare(colour, wing == LongWing ? B2 : G2);
  const int bishop = contains(board.side[colour].bb[Bishop], fianchetto) ? 1 : 0;
  return stored[wing == LongWing ? ShelterB : ShelterG] - 2 - 2 * count(inTheWay) + bishop;
}

}  // namespace

int kingShelter(Evaluator& evaluator, Colour colour) {
  const Board& board = evaluator.board;
  const std::uint32_t opponent = board.side[colour ^ 1].material;
  const int points = materialPoints(opponent);
  int& shelter = evaluator.shelter[static_cast<unsigned>(colour)];
  shelter = 0;
  if (points < EndgamePoints)
    return colour == White ? endgameKing<White>(board, points) : endgameKing<Black>(board, points);

  const int danger = points - 8 + 8 * queenCount(opponent);
  if (danger < SlightDanger) return 0;

  shelter = standingShelter(evaluator, colour);
  int best[2] = {shelter, shelter};
  const int longRight = colour == White ? WhiteLong : BlackLong;
  const int shortRight = colour == White ? WhiteShort : BlackShort;
  if (board.castling & longRight)
    best[LongWing] = std::max(shelter, castledShelter(evaluator, colour, LongWing));
  if (board.castling & shortRight)
    best[ShortWing] = std::max(shelter, castledShelter(evaluator, colour, ShortWing));
  return danger * 5 * (best[LongWing] + best[ShortWing]) / 32;
}

int kingAttack(const Evaluator& evaluator, Colour colour, const AttackRecord& attack) {
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
