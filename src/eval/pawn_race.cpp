#include "eval/pawn_race.h"

#include <algorithm>

#include "board/attacks.h"
#include "eval/evaluator.h"
#include "eval/geometry.h"
#include "eval/king_escort.h"

namespace quill {

namespace {

constexpr Bitboard EscortFiles = ~(fileMask(0) | fileMask(7));

// The set as the colour sees it: the board is turned upside down for Black.
Bitboard relativeSet(Colour colour, Bitboard set) {
  if (colour == White) return set;
  Bitboard flipped = 0;
  for (int rank = 0; rank < 8; ++rank, set >>= 8) flipped = (flipped << 8) | (set & Rank1);
  return flipped;
}

// One colour's attempt to promote a pawn that the other colour can't stop.
template <Colour Us>
class Runner {
 public:
  explicit Runner(const Evaluator& evaluator)
      : board_(evaluator.board),
        own_(board_.side[Us]),
        enemy_(board_.side[Them]),
        passed_(evaluator.pawnEntry->passed),
        enemyCandidate_(evaluator.pawnEntry->side[Them].candidate != 0) {
    kings_ = bit(enemy_.kingSquare);
    knights_ = enemy_.bb[Knight];
    if (board_.stm == Them) {
      kings_ |= kingAttacks[enemy_.kingSquare];
      knights_ |= knightSpread(knights_);
    }
  }

  // Moves of the fastest pawn that runs alone, else of two that one king can't stop, else NoRace.
  int moves() const {
    // Bishops, rooks and queens can stop a pawn in more ways than this looks at.
    if ((enemy_.bb[Bishop] | enemy_.bb[Rook] | enemy_.bb[Queen]) != 0) return NoRace;
    int best = NoRace;
    for (Bitboard pawns = passed_ & own_.bb[Pawn]; pawns != 0;)
      best = std::min(best, singleMoves(popLowest(pawns)));
    return best == NoRace && enemy_.bb[Knight] == 0 ? pairMoves() : best;
  }

  // Moves of the king and of the pawn that it escorts, or NoRace. Requires: no pawn runs alone.
  int escortedMoves() const {
    const Bitboard escortable = passed_ & own_.bb[Pawn] & EscortFiles;
    if (pieceCount(enemy_.material) != 0 || (passed_ & enemy_.bb[Pawn]) != 0 || enemyCandidate_)
      return NoRace;
    Escort escort{0,
                  relativeSquare(Us, own_.kingSquare),
                  relativeSquare(Us, enemy_.kingSquare),
                  relativeSet(Us, own_.bb[Pawn]),
                  relativeSet(Us, enemy_.bb[Pawn]),
                  board_.stm == Us};
    int best = NoRace;
    for (Bitboard pawns = escortable; pawns != 0;) {
      escort.pawn = relativeSquare(Us, popLowest(pawns));
      const int steps = escortSteps(escort);
      if (steps <= MaxEscortSteps) best = std::min(best, steps + 7 - rankOf(escort.pawn));
    }
    return best;
  }

 private:
  static constexpr Colour Them = Us ^ 1;
  static constexpr int Up = Us == White ? 8 : -8;

  // Plays the race out with this side to move: the pawn runs, and the region is where the enemy
  // king can be by then. The own king and the enemy pawns stay where they are.
  bool isCaught(Square pawn) const {
    const Bitboard allowed =
        ~(kingAttacks[own_.kingSquare] | bit(own_.kingSquare) | enemy_.bb[Pawn]);
    Bitboard region = kings_ & allowed & ~pawnAttacks[Us][pawn];
    if (contains(region, pawn)) return true;
    // A pawn on its second rank is as fast as one on its third, thanks to the double step.
    Square square = relativeRank(Us, pawn) == 1 ? pawn + Up : pawn;
    while (((frontSpan[Us][square] | bit(square)) & region) == 0) {
      if (relativeRank(Us, square) == 7) return false;
      square += Up;
      region = grow(region) & allowed & ~pawnAttacks[Us][square];
    }
    return true;
  }

  // Moves until the pawn promotes by itself, or NoRace when it can be stopped.
  int singleMoves(Square pawn) const {
    if ((pawnKnightCone[Us][pawn] & knights_) != 0) return NoRace;
    const Bitboard reach = pawnCone[Us][pawn] | bit(pawn);
    if ((reach & kings_) != 0 && isCaught(pawn)) return NoRace;

    int moves = 7 - relativeRank(Us, pawn);
    const Bitboard path = frontSpan[Us][pawn];
    if (contains(path, own_.kingSquare)) {
      // The own king must step aside first; in front of a rook pawn it may be shut in.
      const Bitboard exits = kingAttacks[own_.kingSquare] & ~path & ~own_.bb[0] & ~grow(kings_);
      if (!contains(EscortFiles, pawn) && exits == 0) return NoRace;
      ++moves;
    }
    const Square goal = relativeSquare(Us, makeSquare(fileOf(pawn), 7));
    if (contains(queenAttacks(goal, board_.occupied), enemy_.kingSquare)) --moves;
    return moves;
  }

  // Two pawns so far apart that the king, once it has dealt with one, is too late for the other.
  // The last pair found counts; the pawns are taken in the order in which their own side sees them,
  // so that both colours find the same one.
  int pairMoves() const {
    int moves = NoRace;
    for (Bitboard firsts = relativeSet(Us, passed_ & own_.bb[Pawn]); firsts != 0;) {
      const Square first = popLowest(firsts);
      for (Bitboard seconds = firsts; seconds != 0;) {
        const Square second = popLowest(seconds);
        if (areTooFarApart(relativeSquare(Us, first), relativeSquare(Us, second)))
          moves = 14 - rankOf(first) - rankOf(second);
      }
    }
    return moves;
  }

  bool areTooFarApart(Square first, Square second) const {
    const int toFirst = distance(enemy_.kingSquare, first);
    const int toSecond = distance(enemy_.kingSquare, second);
    // While the king goes for the nearer pawn, the farther one advances.
    const int ranks = std::min(toFirst, toSecond) - 1;
    if (toFirst > toSecond)
      first = advanced(first, ranks);
    else
      second = advanced(second, ranks);
    return !contains(pawnCone[Us][first], second) && !contains(pawnCone[Us][second], first);
  }

  static Square advanced(Square pawn, int ranks) {
    return pawn + Up * std::min(ranks, 7 - relativeRank(Us, pawn));
  }

  const Board& board_;
  const Side& own_;
  const Side& enemy_;
  const Bitboard passed_;  // of both colours
  const bool enemyCandidate_;
  Bitboard kings_;    // where the enemy king may stand once this colour is to move
  Bitboard knights_;  // the same for the enemy knights
};

}  // namespace

RaceCounts pawnRaceCounts(const Evaluator& evaluator) {
  const Runner<White> white(evaluator);
  const Runner<Black> black(evaluator);
  const RaceCounts alone = {{white.moves(), black.moves()}};
  if (alone.moves[White] != NoRace || alone.moves[Black] != NoRace) return alone;
  return {{white.escortedMoves(), black.escortedMoves()}};
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
