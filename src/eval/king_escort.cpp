#include "eval/king_escort.h"

#include <array>

#include "board/attacks.h"

namespace quill {

namespace {

constexpr Bitboard Everywhere = ~Bitboard{0};

// A set of own-king squares for each square of the enemy king. A border around the squares gives
// each of them eight neighbours.
constexpr int Stride = 10;
using KingSets = std::array<Bitboard, Stride * 10>;

constexpr unsigned placeOf(Square square) {
  return static_cast<unsigned>((rankOf(square) + 1) * Stride + fileOf(square) + 1);
}

constexpr Bitboard withBeside(Bitboard set) {
  return set | ((set << 1) & NotFileA) | ((set >> 1) & NotFileH);
}

// The squares one king step away from some square of the set.
constexpr Bitboard kingSteps(Bitboard set) {
  const Bitboard beside = ((set << 1) & NotFileA) | ((set >> 1) & NotFileH);
  const Bitboard row = set | beside;
  return beside | (row << 8) | (row >> 8);
}

// A flood fill over both kings at once while the pawns stand still. For each square of the enemy
// king there is a set of own-king squares from which the walk succeeds; the sets grow by one step
// and one answer at a time.
class EscortFlood {
 public:
  explicit EscortFlood(const Escort& escort) : escort_(escort) {
    const Bitboard keys = keySquares();
    const Bitboard ownGuard = pawnSetAttacks(White, escort.ownPawns);
    const Bitboard noWalk = escort.ownPawns | pawnSetAttacks(Black, escort.enemyPawns);
    const Bitboard noGo = ownGuard | escort.enemyPawns;
    const Bitboard path = frontSpan[White][escort.pawn];
    closed_.fill(Everywhere);
    for (Square enemy = A1; enemy <= H8; ++enemy) {
      const unsigned place = placeOf(enemy);
      const bool attacksPawn = contains(kingAttacks[enemy], escort.pawn);
      allowed_[place] = enemy == escort.pawn ? 0 : ~(grow(bit(enemy)) | noWalk);
      runs_[place] = contains(pawnCone[White][escort.pawn], enemy) ? 0 : ~path;
      closed_[place] = contains(noGo, enemy) ? Everywhere : kingAttacks[enemy];
      afterOwn_[place] =
          keys & allowed_[place] & (attacksPawn ? kingAttacks[escort.pawn] : Everywhere);
    }
    markStalemates();
  }

  int steps() {
    const unsigned place = placeOf(escort_.enemyKing);
    if (!escort_.isOwnMove && contains(afterOwn_[place], escort_.king)) return 0;
    for (int step = 1; step <= MaxEscortSteps; ++step) {
      stepKing();
      if (escort_.isOwnMove && contains(afterEnemy_[place], escort_.king)) return step;
      const bool hasGrown = answer();
      if (!escort_.isOwnMove && contains(afterOwn_[place], escort_.king)) return step;
      if (!hasGrown) break;
    }
    return MaxEscortSteps + 1;
  }

 private:
  // Where the king has to get. Against a bare king these are the classical key squares: the pawn
  // can't be stopped, whoever is to move. A king with pawns always has a waiting move, so only a
  // king on the seventh rank beside the pawn's file counts, from where it guards the path.
  Bitboard keySquares() const {
    if (escort_.enemyPawns != 0) return adjacentFiles[escort_.pawn] & rankMask(6);
    const Bitboard next = withBeside(bit(escort_.pawn)) << 8;
    return rankOf(escort_.pawn) < 4 ? next << 8 : next | (next << 8);
  }

  // For each square of the enemy king, the own-king squares common to all its neighbours' sets.
  static KingSets commonToNeighbours(const KingSets& sets) {
    KingSets beside;
    KingSets row;
    KingSets common;
    for (unsigned i = 1; i + 1 < sets.size(); ++i) {
      beside[i] = sets[i - 1] & sets[i + 1];
      row[i] = beside[i] & sets[i];
    }
    for (unsigned i = Stride + 1; i + Stride + 1 < sets.size(); ++i)
      common[i] = beside[i] & row[i - Stride] & row[i + Stride];
    return common;
  }

  // Only an advanced pawn can leave a bare king without a move.
  void markStalemates() {
    stalemate_.fill(0);
    if (escort_.enemyPawns == 0 && rankOf(escort_.pawn) >= 5)
      stalemate_ = commonToNeighbours(closed_);
    for (Square enemy = A1; enemy <= H8; ++enemy)
      afterOwn_[placeOf(enemy)] &= ~stalemate_[placeOf(enemy)];
  }

  // The own king steps to where no answer of the enemy helps, or the pawn simply runs.
  void stepKing() {
    for (Square enemy = A1; enemy <= H8; ++enemy) {
      const unsigned place = placeOf(enemy);
      afterEnemy_[place] = (kingSteps(afterOwn_[place]) | runs_[place]) & allowed_[place];
    }
  }

  // The enemy king steps: each of its steps must lead to where the walk succeeds, or be closed to
  // it. Returns whether that added anything.
  bool answer() {
    KingSets sets;
    sets.fill(Everywhere);
    for (Square enemy = A1; enemy <= H8; ++enemy) {
      const unsigned place = placeOf(enemy);
      sets[place] = afterEnemy_[place] | closed_[place];
    }
    const KingSets held = commonToNeighbours(sets);
    Bitboard grown = 0;
    for (Square enemy = A1; enemy <= H8; ++enemy) {
      const unsigned place = placeOf(enemy);
      const Bitboard waiting = escort_.enemyPawns != 0 ? afterEnemy_[place] : Everywhere;
      const Bitboard added = held[place] & waiting & allowed_[place] & ~stalemate_[place];
      grown |= added & ~afterOwn_[place];
      afterOwn_[place] |= added;
    }
    return grown != 0;
  }

  const Escort& escort_;
  KingSets allowed_;     // where the own king may stand
  KingSets runs_;        // where it is not in the way of a pawn that runs through alone
  KingSets closed_;      // where it must stand to keep the enemy king off the square
  KingSets stalemate_;   // where it must not stand when the enemy is to move
  KingSets afterOwn_;    // from where the walk succeeds with the enemy to move
  KingSets afterEnemy_;  // from where the walk succeeds with the own side to move
};

}  // namespace

int escortSteps(const Escort& escort) { return EscortFlood(escort).steps(); }

}  // namespace quill
