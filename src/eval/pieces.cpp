#include "eval/pieces.h"

#include <algorithm>

#include "board/attacks.h"
#include "eval/evaluator.h"

namespace quill {

namespace {

// Pawns against pieces.
constexpr ScorePair PieceStopsPawn = makePair(8, 8);    // a minor piece or king in front of a pawn
constexpr ScorePair PawnCanHit = makePair(8, 0);        // a piece that a pawn's step would attack
constexpr ScorePair OnePieceHit = makePair(16, 16);     // an own piece that a pawn attacks
constexpr ScorePair MorePiecesHit = makePair(48, 48);   // two or more of them, all together
constexpr ScorePair KnightBehindPawn = makePair(8, 0);  // shielded on its file
constexpr ScorePair BishopBehindPawn = makePair(4, 4);

// Pieces against pieces.
constexpr ScorePair KnightHitsMajor = makePair(16, 0);
constexpr ScorePair KnightHitsBishop = makePair(8, 0);
constexpr ScorePair BishopHitsMajor = makePair(16, 0);
constexpr ScorePair RookHitsQueen = makePair(16, 16);
constexpr ScorePair MinorHitsAny = makePair(4, 0);   // once, however many men it attacks
constexpr ScorePair KnightTarget = makePair(0, 24);  // for each man attacked
constexpr ScorePair BishopTarget = makePair(0, 28);
constexpr ScorePair RookTarget = makePair(0, 20);
constexpr ScorePair QueenTarget = makePair(0, 12);

// Places.
constexpr ScorePair BishopOneWing = makePair(0, 24);  // no pawns left on one of the outer wings
constexpr ScorePair RookHalfOpen = makePair(6, 8);
constexpr ScorePair RookOpen = makePair(18, 16);
constexpr ScorePair RooksDoubledOpen = makePair(26, 20);
constexpr ScorePair RookOnSeventh = makePair(8, 20);  // with the enemy king behind it
constexpr ScorePair QueenOnSeventh = makePair(0, 12);

constexpr Bitboard QueenWing = fileMask(0) | fileMask(1);
constexpr Bitboard KingWing = fileMask(6) | fileMask(7);

// What the terms of one colour share.
template <Colour Us>
struct PieceContext {
  static constexpr Colour Them = Us ^ 1;

  explicit PieceContext(const Evaluator& evaluator)
      : board(evaluator.board),
        tables(evaluator.tables),
        own(board.side[Us].bb),
        enemy(board.side[Them].bb) {
    enemyPawnAttacks = pawnSetAttacks(Them, enemy[Pawn] & ~board.blockers[Them]);
    ownPawnAttacks = pawnSetAttacks(Us, own[Pawn]);
    unsafe = enemyPawnAttacks & ~ownPawnAttacks;
    zone = kingZone(board.side[Them].kingSquare);
    const bool kingOnLast = relativeRank(Us, board.side[Them].kingSquare) == 7;
    seventh = kingOnLast ? relativeRankMask(Us, 6) : 0;
  }

  // Notes a knight when its safe attacks meet the king zone: 3 for each square of it.
  void recordKnight(Bitboard attacks) {
    const Bitboard hits = attacks & zone;
    attack.count += hits != 0 ? 1 : 0;
    attack.weight += 3 * count(hits);
  }

  // Notes a bishop, rook or queen, which counts wherever it stands: base, more for each square of
  // the zone in its safe attacks, and more again when these hold none of its equals.
  void recordSlider(Bitboard attacks, int base, int perSquare, Bitboard equals, int unopposed) {
    attack.count += 1;
    attack.weight +=
        base + perSquare * count(attacks & zone) + ((attacks & equals) == 0 ? unopposed : 0);
  }

  const Board& board;
  const EvalTables& tables;
  const std::array<Bitboard, 7>& own;
  const std::array<Bitboard, 7>& enemy;
  Bitboard enemyPawnAttacks;  // of pawns that are not pinned
  Bitboard ownPawnAttacks;
  Bitboard unsafe;   // attacked by enemy pawns and by no own pawn
  Bitboard zone;     // around the enemy king
  Bitboard seventh;  // the seventh rank while the enemy king stands behind it
  AttackRecord attack;
};

template <Colour Us>
[[gnu::always_inline]] inline ScorePair contactTerms(const PieceContext<Us>& c) {
  const Bitboard front = shiftForward(Us, c.own[Pawn]);
  const Bitboard stoppers = c.enemy[Knight] | c.enemy[Bishop] | c.enemy[King];
  const Bitboard nextHits = pawnSetAttacks(Us, front & ~c.board.occupied);
  const Bitboard hit = c.enemyPawnAttacks & c.own[0] & ~c.own[Pawn];

  ScorePair sum = -PieceStopsPawn * count(front & stoppers);
  sum += PawnCanHit * count(nextHits & c.enemy[0] & ~c.enemy[Pawn]);
  if (hit != 0) sum -= moreThanOne(hit) ? MorePiecesHit : OnePieceHit;
  return sum;
}

template <Colour Us>
[[gnu::always_inline]] inline ScorePair knightTerms(PieceContext<Us>& c) {
  const Bitboard blocked = c.own[0] | c.enemy[Pawn];
  ScorePair sum = 0;
  for (Bitboard knights = c.own[Knight]; knights != 0;) {
    const Square square = popLowest(knights);
    const Bitboard attacks = knightAttacks[square];
    const Bitboard safe = attacks & ~c.unsafe;
    c.recordKnight(safe);

    sum += c.tables.knightSquare[tableIndex(Us, square)];
    sum += c.tables.knightMobility[count(safe & ~blocked)];
    if (attacks & (c.enemy[Rook] | c.enemy[Queen])) sum += KnightHitsMajor;
    if (attacks & c.enemy[Bishop]) sum += KnightHitsBishop;
    if (const Bitboard targets = safe & c.enemy[0])
      sum += MinorHitsAny + KnightTarget * count(targets);
    if (shiftForward(Us, bit(square)) & c.own[Pawn]) sum += KnightBehindPawn;
  }
  return sum;
}

template <Colour Us>
[[gnu::always_inline]] inline ScorePair bishopTerms(PieceContext<Us>& c) {
  const Bitboard blocked = c.own[0] | c.enemy[Pawn];
  // Bishops look through what they gain by capturing and through own pieces that can move away.
  const Bitboard occupancy = c.board.occupied & ~(c.enemy[Queen] | c.enemy[Rook] | c.own[Knight] |
                                                  c.own[Rook] | (c.enemy[Knight] & ~c.unsafe));
  const Bitboard pawns = c.own[Pawn] | c.enemy[Pawn];
  const bool isOneWing = (pawns & QueenWing) == 0 || (pawns & KingWing) == 0;

  ScorePair sum = 0;
  for (Bitboard bishops = c.own[Bishop]; bishops != 0;) {
    const Square square = popLowest(bishops);
    const Bitboard attacks = bishopAttacks(square, occupancy);
    const Bitboard safe = attacks & ~c.unsafe;
    c.recordSlider(safe, 0, 3, c.enemy[Bishop], 3);

    sum += c.tables.bishopSquare[tableIndex(Us, square)];
    sum += c.tables.bishopMobility[count(safe & ~blocked)];
    if (attacks & (c.enemy[Rook] | c.enemy[Queen])) sum += BishopHitsMajor;
    if (const Bitboard targets = safe & c.enemy[0])
      sum += MinorHitsAny + BishopTarget * count(targets);
    if (isOneWing) sum -= BishopOneWing;
    if (shiftForward(Us, bit(square)) & c.own[Pawn]) sum += BishopBehindPawn;
  }
  return sum;
}

template <Colour Us>
ScorePair rookFile(const PieceContext<Us>& c, Square square) {
  const Bitboard file = fileMask(fileOf(square));
  // An own pawn closes the file unless it stands unsafely; an enemy pawn makes it worthless when
  // its own pawns protect it and ours do not attack it.
  if ((c.own[Pawn] & file & ~c.unsafe) != 0 || (c.enemy[Pawn] & file & c.unsafe) != 0) return 0;
  if ((c.enemy[Pawn] & file) != 0) return RookHalfOpen;
  return moreThanOne(c.own[Rook] & file) ? RooksDoubledOpen : RookOpen;
}

template <Colour Us>
[[gnu::always_inline]] inline ScorePair rookTerms(PieceContext<Us>& c) {
  const Bitboard occupancy =
      c.board.occupied & ~(c.enemy[Queen] | ((c.enemy[Knight] | c.enemy[Bishop]) & ~c.unsafe) |
                           c.own[Rook] | c.own[Queen]);
  ScorePair sum = 0;
  for (Bitboard rooks = c.own[Rook]; rooks != 0;) {
    const Square square = popLowest(rooks);
    const Bitboard attacks = rookAttacks(square, occupancy);
    const Bitboard safe = attacks & ~c.unsafe;
    c.recordSlider(safe, 1, 4, c.enemy[Rook], 4);

    sum += c.tables.rookMobility[count(safe & ~c.own[0])];
    if (attacks & c.enemy[Queen]) sum += RookHitsQueen;
    sum += RookTarget * count(safe & c.enemy[0]);
    sum += rookFile<Us>(c, square);
    if (contains(c.seventh, square)) sum += RookOnSeventh;
  }
  return sum;
}

template <Colour Us>
[[gnu::always_inline]] inline ScorePair queenTerms(PieceContext<Us>& c) {
  const Bitboard occupancy = c.board.occupied & ~(c.own[Bishop] | c.own[Knight] | c.own[Rook] |
                                                  (c.enemy[Knight] & ~c.unsafe));
  ScorePair sum = 0;
  for (Bitboard queens = c.own[Queen]; queens != 0;) {
    const Square square = popLowest(queens);
    // Rooks on its diagonals and bishops on its rank and file can't hit back.
    const Bitboard soft =
        (c.enemy[Rook] & bishopLines[square]) | (c.enemy[Bishop] & rookLines[square]);
    const Bitboard hard =
        (c.enemy[Bishop] & bishopLines[square]) | (c.enemy[Rook] & rookLines[square]);
    const Bitboard attacks = queenAttacks(square, occupancy & ~(soft & ~c.unsafe));
    const Bitboard safe = attacks & ~c.unsafe;
    c.recordSlider(safe, 4, 4, c.enemy[Rook] | c.enemy[Queen], 4);

    sum += c.tables.queenSquare[tableIndex(Us, square)];
    sum += c.tables.queenMobility[count(safe & ~c.own[0])];
    sum += QueenTarget * count(safe & c.enemy[0] & ~hard);
    if (contains(c.seventh, square)) sum += QueenOnSeventh;
  }
  return sum;
}

template <Colour Us>
[[gnu::always_inline]] inline PieceSums sumsFor(const Evaluator& evaluator) {
  PieceContext<Us> context(evaluator);
  PieceSums sums;
  sums.contacts = contactTerms(context);
  sums.knights = knightTerms(context);
  sums.bishops = bishopTerms(context);
  sums.rooks = rookTerms(context);
  sums.queens = queenTerms(context);
  if (canAttackKing(context.board, Us)) sums.attack = context.attack;
  return sums;
}

template <Colour Us>
int termsFor(const Evaluator& evaluator) {
  const PieceSums sums = sumsFor<Us>(evaluator);
  const ScorePair total = sums.total();
  const int phase = std::min(materialPoints(evaluator.board.side[Us ^ 1].material), 32);
  const int value =
      ((openingOf(total) * phase + 16) >> 5) + ((endgameOf(total) * (32 - phase) + 16) >> 5);
  return value + kingAttack(evaluator, Us, sums.attack);
}

}  // namespace

PieceSums pieceSums(const Evaluator& evaluator, Colour colour) {
  return colour == White ? sumsFor<White>(evaluator) : sumsFor<Black>(evaluator);
}

int pieceTerms(const Evaluator& evaluator, Colour colour) {
  return colour == White ? termsFor<White>(evaluator) : termsFor<Black>(evaluator);
}

}  // namespace quill
