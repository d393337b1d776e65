#include "board/mate_in_one.h"

#include "board/attacks.h"
#include "board/movegen.h"

namespace quill {

namespace {

constexpr Bitboard BoardEdge = rankMask(0) | rankMask(7) | FileA | FileH;
constexpr Bitboard LikeA1 = 0xAA55AA55AA55AA55;  // the squares of a1's colour

constexpr Bitboard sameColour(Square square) { return contains(LikeA1, square) ? LikeA1 : ~LikeA1; }

// What every pattern asks about the position: the king to be mated and what stands around it.
struct Scene {
  const Board& board;
  const Side& attacker;
  const Side& defender;
  Colour attackerColour;
  Colour defenderColour;
  Square king;          // the one to be mated
  Bitboard zone;        // the squares next to it
  Bitboard attacked;    // what the attacker attacks, also through the king
  Bitboard covered;     // where the king can't go: attacked, or occupied by its own side
  Bitboard movers;      // attackers that are free to leave their square
  Bitboard pinnedHere;  // pieces alone between the attacker's king and a defending slider

  Bitboard attackerSliders(int type) const { return attacker.bb[type] | attacker.bb[Queen]; }
  Bitboard defenderSliders(int type) const { return defender.bb[type] | defender.bb[Queen]; }
  bool isEmpty(Bitboard set) const { return (set & board.occupied) == 0; }
  Move moveTo(Square from, Square to) const { return makeCapture(from, to, board.squares[to]); }

  // A defending pawn or knight can take what lands on the square.
  bool isGuardedByPawnOrKnight(Square square) const {
    return (pawnAttacks[attackerColour][square] & defender.bb[Pawn]) != 0 ||
           (knightAttacks[square] & defender.bb[Knight]) != 0;
  }
  // The attacker's pawn, knight or king holds the square.
  bool isHeldByPawnKnightOrKing(Square square) const {
    return (pawnAttacks[defenderColour][square] & attacker.bb[Pawn]) != 0 ||
           (knightAttacks[square] & attacker.bb[Knight]) != 0 ||
           (kingAttacks[square] & attacker.bb[King]) != 0;
  }
  // A slider that already stands on a line of the king mates by taking the defender between them.
  // Returns that defender's square, or -1 unless it alone stands between.
  int onlyDefenderBefore(Square slider) const {
    const Bitboard standing = between[slider][king] & board.occupied;
    if (standing == 0 || moreThanOne(standing) || (standing & attacker.bb[0]) != 0) return -1;
    return lowestSquare(standing);
  }
};

Scene sceneOf(const Board& board, Colour colour) {
  const Colour other = colour ^ 1;
  const Side& attacker = board.side[other];
  const Side& defender = board.side[colour];
  const Bitboard attacked = colour == board.stm ? board.enemyAttacks : attacksBy(board, other);
  return {.board = board,
          .attacker = attacker,
          .defender = defender,
          .attackerColour = other,
          .defenderColour = colour,
          .king = defender.kingSquare,
          .zone = kingAttacks[defender.kingSquare],
          .attacked = attacked,
          .covered = attacked | (defender.bb[0] & ~defender.bb[King]),
          .movers = attacker.bb[0] & ~board.blockers[other],
          .pinnedHere = board.blockers[other]};
}

// Queen contact mates: the queen lands beside the king, protected, and covers every flight square.
bool isQueenContactMate(const Scene& scene, Square queen, Square to) {
  if (scene.isGuardedByPawnOrKnight(to)) return false;
  const Bitboard occupancy = scene.board.occupied & ~bit(queen);
  const Bitboard diagonal = bishopAttacks(to, occupancy);
  const Bitboard straight = rookAttacks(to, occupancy);
  if (!scene.isHeldByPawnKnightOrKing(to) && (diagonal & scene.attacker.bb[Bishop]) == 0 &&
      (straight & scene.attacker.bb[Rook]) == 0) {
    return false;
  }
  if ((diagonal & scene.defenderSliders(Bishop)) != 0) return false;
  if ((straight & scene.defenderSliders(Rook)) != 0) return false;
  // What the queen attacks from her old square may be lost; on the new one she looks through the
  // square that the king leaves.
  const Bitboard taken = (scene.attacked & ~queenLines[queen]) | scene.defender.bb[0] |
                         bishopLines[to] | rookAttacks(to, occupancy & ~bit(scene.king));
  return (scene.zone & ~taken) == 0;
}

Move findQueenContactMate(const Scene& scene) {
  for (Bitboard queens = scene.attacker.bb[Queen] & scene.movers; queens != 0;) {
    const Square queen = popLowest(queens);
    Bitboard targets =
        queenAttacks(queen, scene.board.occupied) & scene.zone & ~scene.attacker.bb[0];
    while (targets != 0) {
      const Square to = popLowest(targets);
      if (isQueenContactMate(scene, queen, to)) return scene.moveTo(queen, to);
    }
  }
  return NoMove;
}

// How many pieces must be able to interpose on a square before a distant check counts as parried.
// The checking piece simply takes a lone interposer, so there must be a second one to take back,
// unless the king or a pawn protects the square.
int interpositionBudget(const Scene& scene, Square square) {
  const bool isHeld = contains(scene.zone, square) ||
                      (pawnAttacks[scene.attackerColour][square] & scene.defender.bb[Pawn]) != 0;
  return isHeld ? 1 : 2;
}

bool pawnCanStepTo(const Scene& scene, Square square) {
  return (shiftForward(scene.attackerColour, bit(square)) & scene.defender.bb[Pawn]) != 0;
}

// Whether the defender can parry a check along a rank or file by interposing on one of the squares.
bool canParryLineCheck(const Scene& scene, Bitboard squares, bool alongRank, Bitboard occupancy) {
  const Bitboard diagonalSliders = scene.defenderSliders(Bishop);
  const Bitboard straightSliders = scene.defenderSliders(Rook);
  while (squares != 0) {
    const Square square = popLowest(squares);
    int budget = interpositionBudget(scene, square);
    if (alongRank && pawnCanStepTo(scene, square)) {
      if (budget == 1) return true;
      budget = 1;
    }
    budget -= count(knightAttacks[square] & scene.defender.bb[Knight]);
    if (budget < 1) return true;
    budget -= count(bishopAttacks(square, occupancy & ~diagonalSliders) & diagonalSliders);
    if (budget < 1) return true;
    budget -= count(rookAttacks(square, occupancy & ~straightSliders) & straightSliders);
    if (budget < 1) return true;
  }
  return false;
}

// The same for a check along a diagonal. An interposer that comes from beside the king, or that
// stands alone before the attacker's king and so uncovers a check, is enough by itself. Any number
// of knights counts as one, and as enough where the square is protected.
bool canParryDiagonalCheck(const Scene& scene, Bitboard squares, Bitboard occupancy) {
  const Side& defender = scene.defender;
  const Bitboard diagonalSliders = scene.defenderSliders(Bishop);
  const Bitboard straightSliders = scene.defenderSliders(Rook);
  const Bitboard open = occupancy & ~(diagonalSliders | straightSliders);
  while (squares != 0) {
    const Square square = popLowest(squares);
    int budget = interpositionBudget(scene, square);
    if (pawnCanStepTo(scene, square)) {
      if (budget == 1) return true;
      budget = 1;
    }
    const Bitboard knights = knightAttacks[square] & defender.bb[Knight];
    const Bitboard diagonal = bishopAttacks(square, open) & diagonalSliders;
    const Bitboard straight = rookAttacks(square, open) & straightSliders;
    if (((knights | diagonal | straight) & (scene.pinnedHere | scene.zone)) != 0) return true;
    if (knights != 0) {
      if (budget == 1) return true;
      budget = 1;
    }
    budget -= count(diagonal);
    if (budget < 1) return true;
    budget -= count(straight);
    if (budget < 1) return true;
  }
  return false;
}

// A rook or queen that leaves its own rank (or file) gives up the squares there that are next to
// the king, unless another rook or queen stays on it; a queen gives up her diagonals as well.
bool givesUpCoverage(const Scene& scene, Square slider, Bitboard ownLine, Bitboard kingLine) {
  const Bitboard flights = scene.zone & ~scene.defender.bb[0];
  const Bitboard heldElsewhere = kingAttacks[scene.attacker.kingSquare] |
                                 pawnSetAttacks(scene.attackerColour, scene.attacker.bb[Pawn]);
  if ((ownLine & flights & ~heldElsewhere) != 0) {
    const Bitboard mates = rookAttacks(slider, scene.board.occupied) & ownLine &
                           scene.attackerSliders(Rook) & ~scene.zone;
    if (mates == 0) return true;
  }
  return contains(scene.attacker.bb[Queen], slider) &&
         (bishopLines[slider] & flights & ~kingLine) != 0;
}

// Whether the king can flee from a distant check by a rook or queen after all, usually because the
// checking piece shuts the line of its own queen, rook or bishop to a square next to the king.
// Rare, so it is asked last.
bool letsKingOut(const Scene& scene, Square slider, Square to) {
  const Bitboard occupancy = (scene.board.occupied & ~bit(slider) & ~bit(scene.king)) | bit(to);
  const Bitboard moved = bit(slider) | bit(to);
  const Bitboard mover = contains(scene.attacker.bb[Queen], slider) ? bit(to) : 0;
  const Bitboard diagonal = (scene.attackerSliders(Bishop) & ~moved) | mover;
  const Bitboard straight = (scene.attackerSliders(Rook) & ~moved) | bit(to);
  for (Bitboard flights = scene.zone & ~scene.defender.bb[0]; flights != 0;) {
    const Square flight = popLowest(flights);
    if (!scene.isHeldByPawnKnightOrKing(flight) &&
        (bishopAttacks(flight, occupancy) & diagonal) == 0 &&
        (rookAttacks(flight, occupancy) & straight) == 0) {
      return true;
    }
  }
  return false;
}

// Whether the rook or queen mates from its destination: it can't be taken, and it is either
// protected beside the king or gives a distant check that can't be parried.
bool isLineMate(const Scene& scene, Square slider, Square to, bool alongRank) {
  if (scene.isGuardedByPawnOrKnight(to)) return false;
  const Bitboard occupancy = scene.board.occupied & ~bit(slider);
  const Bitboard diagonal = bishopAttacks(to, occupancy);
  const Bitboard defendingRooks = scene.defenderSliders(Rook);
  if ((diagonal & scene.defenderSliders(Bishop)) != 0) return false;
  if ((rookAttacks(to, occupancy & ~defendingRooks) & defendingRooks) != 0) return false;

  const Bitboard gap = between[to][scene.king];
  if (gap != 0) {
    return !canParryLineCheck(scene, gap, alongRank, occupancy) && !letsKingOut(scene, slider, to);
  }
  if ((diagonal & scene.attackerSliders(Bishop) & ~bit(slider)) != 0) {
    // A rook shuts the protector's line to the squares behind it, where the king may go; on the
    // edge there are none.
    return contains(scene.attacker.bb[Queen], slider) || contains(BoardEdge, to);
  }
  return scene.isHeldByPawnKnightOrKing(to) ||
         (rookAttacks(to, occupancy) & scene.attackerSliders(Rook) & ~bit(slider)) != 0;
}

Move findLineMate(const Scene& scene) {
  for (const bool alongRank : {true, false}) {
    const FileRank& kingLines = fileRank[scene.king];
    const Bitboard kingLine = alongRank ? kingLines.rank : kingLines.file;
    if ((scene.zone & ~kingLine & ~scene.covered) != 0) continue;

    for (Bitboard sliders = scene.attackerSliders(Rook) & scene.movers; sliders != 0;) {
      const Square slider = popLowest(sliders);
      int to = alongRank ? makeSquare(fileOf(slider), rankOf(scene.king))
                         : makeSquare(fileOf(scene.king), rankOf(slider));
      if (to == scene.king) continue;
      if (to == slider) {
        to = scene.onlyDefenderBefore(slider);
        if (to < 0) continue;
      } else {
        const FileRank& own = fileRank[slider];
        if (contains(scene.attacker.bb[0], to)) continue;
        if (!scene.isEmpty(between[slider][to] | between[to][scene.king])) continue;
        if (givesUpCoverage(scene, slider, alongRank ? own.rank : own.file, kingLine)) continue;
      }
      if (isLineMate(scene, slider, to, alongRank)) return scene.moveTo(slider, to);
    }
  }
  return NoMove;
}

// As isLineMate, for a bishop or queen that checks along a diagonal.
bool isDiagonalMate(const Scene& scene, Square slider, Square to) {
  if (scene.isGuardedByPawnOrKnight(to)) return false;
  const Bitboard occupancy = scene.board.occupied & ~bit(slider);
  const Bitboard diagonal = bishopAttacks(to, occupancy);
  const Bitboard straight = rookAttacks(to, occupancy);
  if ((diagonal & scene.defenderSliders(Bishop)) != 0) return false;
  if ((straight & scene.defenderSliders(Rook)) != 0) return false;

  const Bitboard gap = between[to][scene.king];
  if (gap != 0) return !canParryDiagonalCheck(scene, gap, occupancy);
  if ((straight & scene.attackerSliders(Rook) & ~bit(slider)) != 0) {
    return contains(scene.attacker.bb[Queen], slider);
  }
  return scene.isHeldByPawnKnightOrKing(to) ||
         (diagonal & scene.attackerSliders(Bishop) & ~bit(slider)) != 0;
}

// Where the slider lands when it moves along its own diagonal to the king's, or -1 when it can't.
int diagonalDestination(const Scene& scene, Square slider, Bitboard own, Bitboard kingDiagonal) {
  const Bitboard crossing = own & kingDiagonal;
  if (crossing == 0) return -1;
  const Square to = lowestSquare(crossing);
  if (to == slider) return scene.onlyDefenderBefore(slider);
  if (contains(scene.attacker.bb[0], to)) return -1;
  if (!scene.isEmpty(between[slider][to] | between[to][scene.king])) return -1;
  // A slider that already attacks squares next to the king would give them up. One that attacks the
  // king itself does so too, so the king is never the destination.
  const bool isQueen = contains(scene.attacker.bb[Queen], slider);
  const Bitboard lines = isQueen ? queenLines[slider] : bishopLines[slider];
  if ((lines & scene.zone & ~bit(to)) != 0) return -1;
  return to;
}

Move findDiagonalMate(const Scene& scene) {
  if ((scene.zone & rookLines[scene.king] & ~scene.covered) != 0) return NoMove;
  const DiagonalPair& kings = diagonals[scene.king];
  const Bitboard flights = scene.zone & ~scene.covered;
  Bitboard sliders = scene.attackerSliders(Bishop) & scene.movers & sameColour(scene.king);
  while (sliders != 0) {
    const Square slider = popLowest(sliders);
    const DiagonalPair& own = diagonals[slider];
    if ((flights & ~kings.falling) == 0) {
      const int to = diagonalDestination(scene, slider, own.rising, kings.falling);
      if (to >= 0 && isDiagonalMate(scene, slider, to)) return scene.moveTo(slider, to);
    }
    if ((flights & ~kings.rising) == 0) {
      const int to = diagonalDestination(scene, slider, own.falling, kings.rising);
      if (to >= 0 && isDiagonalMate(scene, slider, to)) return scene.moveTo(slider, to);
    }
  }
  return NoMove;
}

// Smothered mates: only the defender's men and the other king keep the king from moving.
Move findKnightMate(const Scene& scene) {
  if ((scene.zone & ~scene.defender.bb[0] & ~kingAttacks[scene.attacker.kingSquare]) != 0) {
    return NoMove;
  }
  Bitboard knights = scene.attacker.bb[Knight] & scene.movers & twoKnightMoves[scene.king];
  while (knights != 0) {
    const Square knight = popLowest(knights);
    Bitboard targets = knightAttacks[knight] & knightAttacks[scene.king] & ~scene.attacker.bb[0];
    while (targets != 0) {
      const Square to = popLowest(targets);
      if (scene.isGuardedByPawnOrKnight(to)) continue;
      if ((bishopAttacks(to, scene.board.occupied) & scene.defenderSliders(Bishop)) != 0) continue;
      if ((rookAttacks(to, scene.board.occupied) & scene.defenderSliders(Rook)) != 0) continue;
      return scene.moveTo(knight, to);
    }
  }
  return NoMove;
}

}  // namespace

Move findMateInOne(const Board& board, Colour colour) {
  const Scene scene = sceneOf(board, colour);
  if (const Move move = findQueenContactMate(scene)) return move;
  if (const Move move = findLineMate(scene)) return move;
  if (const Move move = findDiagonalMate(scene)) return move;
  return findKnightMate(scene);
}

}  // namespace quill
