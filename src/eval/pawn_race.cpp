#include "eval/pawn_race.h"

#include <algorithm>

#include "board/attacks.h"
#include "eval/evaluator.h"
#include "eval/geometry.h"

namespace quill {

namespace {

// One colour's attempt to promote a pawn that the other colour can't stop.
template <Colour Us>
struct Runner {
  static constexpr Colour Them = Us ^ 1;
  static constexpr int Up = Us == White ? 8 : -8;

  explicit Runner(const Evaluator& evaluator)
      : board(evaluator.board),
        own(board.side[Us]),
        enemy(board.side[Them]),
        passed(evaluator.pawnEntry->passed & own.bb[Pawn]) {
    kings = bit(enemy.kingSquare);
    knights = enemy.bb[Knight];
    if (board.stm == Them) {
      kings |= kingAttacks[enemy.kingSquare];
      knights |= knightSpread(knights);
    }
  }

  // A pawn on its second rank runs as from the third: its double step saves the move.
  static Square startOf(Square pawn) { return relativeRank(Us, pawn) == 1 ? pawn + Up : pawn; }

  // Plays the race out with this side to move: the pawn runs, and the king region is where the
  // enemy king can be by then. Own king and enemy pawns stay where they are.
  bool isCaught(Square pawn, Bitboard region) const {
    const Bitboard allowed = ~(kingAttacks[own.kingSquare] | bit(own.kingSquare) | enemy.bb[Pawn]);
    Square square = startOf(pawn);
    region &= allowed & ~pawnAttacks[Us][pawn];
    while (((frontSpan[Us][square] | bit(square)) & region) == 0) {
      if (relativeRank(Us, square) == 7) return false;
      square += Up;
      region = grow(region) & allowed & ~pawnAttacks[Us][square];
    }
    return true;
  }

  // Moves that the pawn needs by itself, or NoRace when it can be stopped.
  int movesOf(Square pawn) const {
    if ((pawnKnightCone[Us][pawn] & knights) != 0) return NoRace;
    if ((pawnCone[Us][pawn] & kings) != 0 && isCaught(pawn, kings)) return NoRace;

    int moves = 7 - relativeRank(Us, pawn);
    const Bitboard path = frontSpan[Us][pawn];
    if (contains(path, own.kingSquare)) {
      const int file = fileOf(pawn);
      const Bitboard exits = kingAttacks[own.kingSquare] & ~path & ~own.bb[0] & ~grow(kings);
      if ((file == 0 || file == 7) && exits == 0) return NoRace;
      ++moves;
    }
    const Square goal = relativeSquare(Us, makeSquare(fileOf(pawn), 7));
    if (contains(queenAttacks(goal, board.occupied), enemy.kingSquare)) --moves;
    return moves;
  }

  // Bishops, rooks and queens stop pawns in more ways than are worked out here.
  bool mayRace() const { return (enemy.bb[Bishop] | enemy.bb[Rook] | enemy.bb[Queen]) == 0; }

  int singleMoves() const {
    if (!mayRace()) return NoRace;
    int best = NoRace;
    for (Bitboard pawns = passed; pawns != 0;) best = std::min(best, movesOf(popLowest(pawns)));
    return best;
  }

  const Board& board;
  const Side& own;
  const Side& enemy;
  Bitboard passed;   // of this colour
  Bitboard kings;    // where the enemy king stands once this colour is to move
  Bitboard knights;  // the same for the enemy knights
};

}  // namespace

RaceCounts pawnRaceCounts(const Evaluator& evaluator) {
  return {Runner<White>(evaluator).singleMoves(), Runner<Black>(evaluator).singleMoves()};
}

int pawnRace(const Evaluator& evaluator) {
  const RaceCounts counts = pawnRaceCounts(evaluator);
  const int white = counts.moves[White];
  const int black = counts.moves[Black];
  if (white == NoRace && black == NoRace) return 0;
  const int whiteWins = 500 - 10 * white;
  const int blackWins = -(500 - 10 * black);
  if (black == NoRace) return whiteWins;
  if (white == NoRace) return blackWins;
  // The side to move is half a move ahead; a close race leaves a queen each.
  if (evaluator.board.stm == White)
    return white < black ? whiteWins : white - 1 <= black ? 0 : blackWins;
  return white < black - 1 ? whiteWins : white <= black ? 0 : blackWins;
}

}  // namespace quill
