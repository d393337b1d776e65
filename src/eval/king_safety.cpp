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
template <Colour Us>
int standingShelter(const Evaluator& evaluator) {
  const Board& board = evaluator.board;
  const Square king = board.side[Us].kingSquare;
  const auto& stored = evaluator.pawnEntry->side[Us].shelter;
  const int file = fileOf(king);

  int shelter;
  if (file == 3)
    shelter = shelterAt(board, Us, relativeSquare(Us, D1));
  else
    shelter = stored[file < 3 ? ShelterB : file == 4 ? ShelterE : ShelterG];
  if (contains(board.side[Us].bb[Bishop], kingFront(king))) shelter += 1;
  return shelter - KingSquarePenalty[tableIndex(Us, king)];
}

// Shelter points that castling on a wing would give: those of the wing, less a cost for the move
// and for each piece still in the way, and a point for a bishop fianchettoed there.
template <Colour Us>
int castledShelter(const Evaluator& evaluator, Wing wing) {
  const Board& board = evaluator.board;
  const auto& stored = evaluator.pawnEntry->side[Us].shelter;
  const Bitboard inTheWay = board.occupied & CastleTable[Us][wing].emptyMask;
  const Square fianchetto = relativeSquare(Us, wing == LongWing ? B2 : G2);
  const int bishop = contains(board.side[Us].bb[Bishop], fianchetto) ? 1 : 0;
  return stored[wing == LongWing ? ShelterB : ShelterG] - 2 - 2 * count(inTheWay) + bishop;
}

template <Colour Us>
int shelterTerm(Evaluator& evaluator) {
  const Board& board = evaluator.board;
  const std::uint32_t opponent = board.side[Us ^ 1].material;
  const int points = materialPoints(opponent);
  int& shelter = evaluator.shelter[Us];
  shelter = 0;
  if (points < EndgamePoints) return endgameKing<Us>(board, points);

  const int danger = points - 8 + 8 * queenCount(opponent);
  if (danger < SlightDanger) return 0;

  shelter = standingShelter<Us>(evaluator);
  int best[2] = {shelter, shelter};
  constexpr int LongRight = Us == White ? WhiteLong : BlackLong;
  constexpr int ShortRight = Us == White ? WhiteShort : BlackShort;
  if (board.castling & LongRight)
    best[LongWing] = std::max(shelter, castledShelter<Us>(evaluator, LongWing));
  if (board.castling & ShortRight)
    best[ShortWing] = std::max(shelter, castledShelter<Us>(evaluator, ShortWing));
  return danger * 5 * (best[LongWing] + best[ShortWing]) / 32;
}

}  // namespace

int kingShelter(Evaluator& evaluator, Colour colour) {
  return colour == White ? shelterTerm<White>(evaluator) : shelterTerm<Black>(evaluator);
}

}  // namespace quill
