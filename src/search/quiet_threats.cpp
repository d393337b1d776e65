#include "search/quiet_threats.h"

#include "board/attacks.h"

namespace quill {

namespace {

// Up to these margins (centipawns) a threat against this kind of target is taken seriously.
constexpr int MinorTargetMargin = 500;
constexpr int RookTargetMargin = 700;
constexpr int QueenTargetMargin = 1100;

// What a slider sees from one square of an empty board that it doesn't see from another.
Bitboard newRays(const Bitboard (&lines)[64], Square from, Square to) {
  return (lines[to] ^ bit(to)) & ~(lines[from] ^ bit(from));
}

// The squares that a node's moves are measured against, computed once.
class ThreatMap {
 public:
  ThreatMap(const Board& board, int margin);
  ThreatFlag flagOf(Move move) const;

 private:
  bool pawnThreatens(Square to) const;
  bool bishopThreatens(Square from, Square to) const;
  bool rookThreatens(Square from, Square to) const;
  bool queenThreatens(Square from, Square to) const;
  bool kingThreatens(Square to) const;
  // The slider comes to face the enemy king with at most one man between.
  bool facesKing(Bitboard rays, Square to) const {
    return contains(rays, enemyKing_) && !moreThanOne(between[to][enemyKing_] & screens_);
  }

  const Board& board_;
  const Side& own_;
  const Side& enemy_;
  const Colour us_;
  const Square enemyKing_;
  const Bitboard kingZone_;      // squares next to the enemy king
  Bitboard queenTargets_;        // the targets of every margin, and queens
  Bitboard targets_;             // what a threat must attack at this margin
  const Bitboard pawnAttacked_;  // by enemy pawns
  const Bitboard pawnSupport_;   // attacked by our pawns that are near promotion
  const Bitboard screens_;       // what stops rays: enemies and our pawns
  Bitboard vacated_ = 0;         // origins of the last two moves
};

ThreatMap::ThreatMap(const Board& board, int margin)
    : board_(board),
      own_(board.own()),
      enemy_(board.enemy()),
      us_(board.stm),
      enemyKing_(enemy_.kingSquare),
      kingZone_(kingAttacks[enemyKing_]),
      pawnAttacked_(pawnSetAttacks(us_ ^ 1, enemy_.bb[Pawn])),
      pawnSupport_(pawnSetAttacks(
          us_, own_.bb[Pawn] & (relativeRankMask(us_, 5) | relativeRankMask(us_, 6)))),
      screens_(enemy_.bb[0] | own_.bb[Pawn]) {
  const Bitboard shields = enemy_.bb[0] & board.blockers[us_ ^ 1];
  const Bitboard promotions = shiftForward(us_, own_.bb[Pawn] & relativeRankMask(us_, 6));
  const Bitboard always = shields | promotions | bit(enemyKing_) | kingZone_;
  queenTargets_ = always | enemy_.bb[Queen];
  targets_ = margin >= QueenTargetMargin ? always : queenTargets_;
  if (margin < RookTargetMargin) {
    targets_ |= enemy_.bb[Rook] | (enemy_.bb[Pawn] & relativeRankMask(us_, 1));
  }
  if (margin < MinorTargetMargin) targets_ |= enemy_.bb[Knight] | enemy_.bb[Bishop];

  for (int ply = board.ply; ply > 0 && ply > board.ply - 2; --ply) {
    const Move move = board.moves[static_cast<unsigned>(ply)];
    if (move != NoMove) vacated_ |= bit(fromOf(move));
  }
}

ThreatFlag ThreatMap::flagOf(Move move) const {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  if (contains(board_.blockers[us_ ^ 1], from)) return MayDiscoverCheck;
  const int type = typeOf(board_.squares[from]);
  bool threatens;
  if (type == Pawn) {
    threatens = pawnThreatens(to);
  } else if (contains(pawnAttacked_, from)) {
    threatens = true;  // saves the piece from a pawn
  } else if (type == Knight) {
    threatens = (knightAttacks[to] & targets_) != 0;
  } else if (type == King) {
    threatens = isCastling(move) || kingThreatens(to);
  } else if (contains(pawnSupport_, to) || (between[from][to] & vacated_) != 0) {
    threatens = true;  // helps a pawn forward, or uses a line just opened
  } else {
    threatens = type == Bishop ? bishopThreatens(from, to)
                : type == Rook ? rookThreatens(from, to)
                               : queenThreatens(from, to);
  }
  return threatens ? Threatens : NoThreat;
}

bool ThreatMap::pawnThreatens(Square to) const {
  if ((pawnAttacks[us_][to] & targets_) != 0) return true;
  return relativeRank(us_, to) >= 4 && (passedSpan[us_][to] & enemy_.bb[Pawn]) == 0;
}

bool ThreatMap::bishopThreatens(Square from, Square to) const {
  const Bitboard rays = newRays(bishopLines, from, to);
  if ((rays & targets_) != 0 && (bishopAttacks(to, screens_) & targets_) != 0) return true;
  return facesKing(rays, to);
}

bool ThreatMap::rookThreatens(Square from, Square to) const {
  const Bitboard rays = newRays(rookLines, from, to);
  if ((rays & queenTargets_) != 0 && (rookAttacks(to, screens_) & queenTargets_) != 0) return true;
  return facesKing(rays, to);
}

bool ThreatMap::queenThreatens(Square from, Square to) const {
  if (contains(board_.enemyAttacks, from) && !contains(board_.enemyAttacks, to)) return true;
  const Bitboard rays = newRays(queenLines, from, to);
  if ((rays & kingZone_) != 0) return (queenAttacks(to, screens_) & kingZone_) != 0;
  return facesKing(rays, to);
}

bool ThreatMap::kingThreatens(Square to) const {
  if ((kingAttacks[to] & targets_) != 0) return true;
  return relativeRank(us_, to) == 6 && (kingAttacks[to] & own_.bb[Pawn]) != 0;
}

}  // namespace

void flagQuietThreats(const Board& board, const Move* first, const Move* end, int* flags,
                      int margin) {
  const ThreatMap map(board, margin);
  for (const Move* move = first; move != end; ++move) *flags++ = map.flagOf(*move);
}

}  // namespace quill
