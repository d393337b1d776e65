#include "board/movegen.h"

#include <cassert>

#include "board/attacks.h"

namespace quill {

namespace {

// What the generators of one call share.
struct Context {
  // Requires: valid attack information.
  explicit Context(const Board& b)
      : Context(b, b.enemyAttacks, b.blockers[static_cast<unsigned>(b.stm)]) {}
  // With attack information from elsewhere.
  Context(const Board& b, Bitboard enemyAttacks, Bitboard blockers)
      : board(b),
        own(b.own().bb[0]),
        victims(b.enemy().bb[0] & ~b.enemy().bb[King]),
        attacked(enemyAttacks),
        pinned(blockers),
        king(b.own().kingSquare) {}

  const Board& board;
  Bitboard own;
  Bitboard victims;   // enemy men that can be captured
  Bitboard attacked;  // where the king must not go
  Bitboard pinned;
  Square king;

  Bitboard unpinned(int type) const {
    return board.own().bb[static_cast<unsigned>(type)] & ~pinned;
  }
  PieceCode codeOn(Square square) const { return board.squares[static_cast<unsigned>(square)]; }
  Move moveTo(Square from, Square to) const { return makeCapture(from, to, codeOn(to)); }
};

constexpr int pushOf(Colour colour) { return colour == White ? 8 : -8; }
constexpr Bitboard LastRanks = rankMask(0) | rankMask(7);

// The number of moves in the place of a list. Every generator hands on either of the two, so that
// counting follows the very rules of writing.
struct MoveCount {
  int moves = 0;
};

Move* addMove(Move* list, Move move) {
  *list++ = move;
  return list;
}
MoveCount addMove(MoveCount count, Move) { return {count.moves + 1}; }

template <typename Moves>
Moves addPromotions(Moves list, Move move) {
  for (const int type : {Queen, Knight, Bishop, Rook}) {
    list = addMove(list, withPromotion(move, type));
  }
  return list;
}

// A pawn move, as four promotions when it reaches the last rank.
template <typename Moves>
Moves addPawnMove(Moves list, Move move) {
  return contains(LastRanks, toOf(move)) ? addPromotions(list, move) : addMove(list, move);
}

Move* addMoves(const Context& c, Move* list, Square from, Bitboard destinations) {
  while (destinations != 0) *list++ = c.moveTo(from, popLowest(destinations));
  return list;
}
MoveCount addMoves(const Context&, MoveCount counted, Square, Bitboard destinations) {
  return {counted.moves + count(destinations)};
}

// Pawn moves to the destinations, each from `offset` squares behind.
Move* addPawnSet(const Context& c, Move* list, Bitboard destinations, int offset) {
  while (destinations != 0) {
    const Square to = popLowest(destinations);
    list = addPawnMove(list, c.moveTo(to - offset, to));
  }
  return list;
}
MoveCount addPawnSet(const Context&, MoveCount counted, Bitboard destinations, int) {
  return {counted.moves + count(destinations) + 3 * count(destinations & LastRanks)};
}

// Pawn steps that are no captures and no promotions.
Move* addPlainSteps(Move* list, Bitboard destinations, int offset, Move flag) {
  while (destinations != 0) {
    const Square to = popLowest(destinations);
    *list++ = makeQuiet(to - offset, to) | flag;
  }
  return list;
}
MoveCount addPlainSteps(MoveCount counted, Bitboard destinations, int, Move) {
  return {counted.moves + count(destinations)};
}

// The one capture of a pinned pawn that stays on its pin line, 0 when there is none.
Bitboard pinnedPawnCapture(const Context& c, Square from) {
  return pawnAttacks[c.board.stm][from] & c.victims & line[c.king][from];
}

template <Colour Us, typename Moves>
Moves addPinnedPawns(const Context& c, Moves list) {
  constexpr int Push = pushOf(Us);
  for (Bitboard pawns = c.board.own().bb[Pawn] & c.pinned; pawns != 0;) {
    const Square from = popLowest(pawns);
    const Square to = from + Push;
    if (contains(line[c.king][from] & ~c.board.occupied, to)) {
      list = addMove(list, makeQuiet(from, to));
      if (relativeRank(Us, from) == 1 && !contains(c.board.occupied, to + Push)) {
        list = addMove(list, makeQuiet(from, to + Push) | DoubleStepFlag);
      }
    } else if (const Bitboard capture = pinnedPawnCapture(c, from)) {
      list = addPawnMove(list, c.moveTo(from, lowestSquare(capture)));
    }
  }
  return list;
}

// Whether the king is safe from sliders once the capturing and the captured pawn have left their
// squares. Pins do not tell, because two pawns leave at once.
bool isEnPassantSafe(const Board& board, Square from, Square to, Square victim) {
  const Bitboard occupancy = (board.occupied ^ bit(from) ^ bit(victim)) | bit(to);
  const Square king = board.own().kingSquare;
  const Side& enemy = board.enemy();
  return (rookAttacks(king, occupancy) & (enemy.bb[Rook] | enemy.bb[Queen])) == 0 &&
         (bishopAttacks(king, occupancy) & (enemy.bb[Bishop] | enemy.bb[Queen])) == 0;
}

template <typename Moves>
Moves addEnPassant(const Board& board, Moves list) {
  const Square victim = usableEpSquare(board);
  if (victim == 0) return list;
  const Square to = victim + pushOf(board.stm);
  const PieceCode pawn = makeCode(board.stm, Pawn);
  const Move base = makeCapture(0, to, makeCode(board.stm ^ 1, Pawn)) | EnPassantFlag;
  for (const int side : {-1, 1}) {
    const Square from = victim + side;
    const int file = fileOf(victim) + side;
    if (file < 0 || file > 7 || board.squares[static_cast<unsigned>(from)] != pawn) continue;
    if (!isEnPassantSafe(board, from, to, victim)) continue;
    list = addMove(list, base | makeQuiet(from, 0));
  }
  return list;
}

bool canCastle(const Board& board, Bitboard attacked, Wing wing) {
  const unsigned right = (wing == ShortWing ? WhiteShort : WhiteLong) << board.stm;
  const CastleInfo& castle = CastleTable[board.stm][wing];
  return (board.castling & right) != 0 && (board.occupied & castle.emptyMask) == 0 &&
         (attacked & castle.safeMask) == 0;
}

Move castlingMove(Colour colour, Wing wing) {
  const CastleInfo& castle = CastleTable[colour][wing];
  return makeQuiet(castle.kingFrom, castle.kingTo) | CastlingFlag;
}

template <Colour Us, typename Moves>
Moves addUnpinnedPawns(const Context& c, Moves list) {
  constexpr int Push = pushOf(Us);
  const Bitboard pawns = c.unpinned(Pawn);
  const Bitboard empty = ~c.board.occupied;
  list = addPawnSet(c, list, pawnAttacksWest(Us, pawns) & c.victims, Push - 1);
  list = addPawnSet(c, list, pawnAttacksEast(Us, pawns) & c.victims, Push + 1);
  const Bitboard steps = shiftForward(Us, pawns) & empty;
  list = addPawnSet(c, list, steps & LastRanks, Push);
  const Bitboard doubles = shiftForward(Us, steps & relativeRankMask(Us, 2)) & empty;
  list = addPlainSteps(list, doubles, 2 * Push, DoubleStepFlag);
  return addPlainSteps(list, steps & ~LastRanks, Push, NoMove);
}

template <typename Moves>
Moves addKnights(const Context& c, Moves list, Bitboard targets) {
  for (Bitboard knights = c.unpinned(Knight); knights != 0;) {
    const Square from = popLowest(knights);
    list = addMoves(c, list, from, knightAttacks[from] & targets);
  }
  return list;
}

enum SliderKind { Diagonal = 1, Straight = 2, Both = 3 };

// Moves of the sliders in the set; a pinned one stays on its line.
template <SliderKind Kind, typename Moves>
Moves addSliders(const Context& c, Moves list, Bitboard sliders, Bitboard targets) {
  while (sliders != 0) {
    const Square from = popLowest(sliders);
    Bitboard attacks = 0;
    if constexpr ((Kind & Diagonal) != 0) attacks |= bishopAttacks(from, c.board.occupied);
    if constexpr ((Kind & Straight) != 0) attacks |= rookAttacks(from, c.board.occupied);
    attacks &= targets;
    if (contains(c.pinned, from)) attacks &= line[c.king][from];
    list = addMoves(c, list, from, attacks);
  }
  return list;
}

template <Colour Us, typename Moves>
Moves generateMovesFor(const Context& c, Moves list) {
  const Board& board = c.board;
  const Side& us = board.own();
  const Bitboard targets = ~c.own & ~board.enemy().bb[King];
  list = addPinnedPawns<Us>(c, list);
  if (board.epSquare != 0) list = addEnPassant(board, list);
  for (const Wing wing : {ShortWing, LongWing}) {
    if (canCastle(board, c.attacked, wing)) list = addMove(list, castlingMove(Us, wing));
  }
  list = addUnpinnedPawns<Us>(c, list);
  list = addKnights(c, list, targets);
  list = addSliders<Diagonal>(c, list, us.bb[Bishop] | us.bb[Queen], targets);
  list = addSliders<Straight>(c, list, us.bb[Rook] | us.bb[Queen], targets);
  return addMoves(c, list, c.king, kingAttacks[c.king] & targets & ~c.attacked);
}

template <Colour Us, typename Moves>
Moves addPawnEvasions(const Context& c, Moves list, Square checker, Bitboard targets) {
  constexpr int Push = pushOf(Us);
  const Bitboard pawns = c.unpinned(Pawn);
  const Bitboard empty = ~c.board.occupied;
  const Bitboard steps = shiftForward(Us, pawns) & empty;
  list = addPawnSet(c, list, steps & targets, Push);
  const Bitboard doubles = shiftForward(Us, steps & relativeRankMask(Us, 2)) & empty & targets;
  list = addPlainSteps(list, doubles, 2 * Push, DoubleStepFlag);
  for (Bitboard takers = pawns & pawnAttacks[Us ^ 1][checker]; takers != 0;) {
    const Move move = c.moveTo(popLowest(takers), checker);
    if (contains(LastRanks, checker)) {
      for (const int type : {Queen, Knight, Rook, Bishop}) {
        list = addMove(list, withPromotion(move, type));
      }
    } else {
      list = addMove(list, move);
    }
  }
  if (checker == c.board.epSquare) list = addEnPassant(c.board, list);
  return list;
}

// The checker, as a set, when men other than the king can answer the check; empty in double check,
// and when the kings stand side by side, which happens only in a position from a FEN.
Bitboard answerableChecker(const Board& board) {
  const Bitboard checkers = findCheckers(board);
  const bool kingsTouch = contains(kingAttacks[board.own().kingSquare], board.enemy().kingSquare);
  return moreThanOne(checkers) || kingsTouch ? 0 : checkers;
}

template <Colour Us, typename Moves>
Moves generateEvasionsFor(const Context& c, Moves list) {
  const Board& board = c.board;
  const Side& us = board.own();
  const Bitboard allowed = ~c.own & ~board.enemy().bb[King];
  list = addMoves(c, list, c.king, kingAttacks[c.king] & allowed & ~c.attacked);
  const Bitboard answerable = answerableChecker(board);
  if (answerable == 0) return list;

  const Square checker = lowestSquare(answerable);
  const Bitboard targets = between[checker][c.king] | answerable;
  list = addKnights(c, list, targets);
  list = addSliders<Diagonal>(c, list, (us.bb[Bishop] | us.bb[Queen]) & ~c.pinned, targets);
  list = addSliders<Straight>(c, list, (us.bb[Rook] | us.bb[Queen]) & ~c.pinned, targets);
  return addPawnEvasions<Us>(c, list, checker, targets);
}

// Queen promotions of unpinned pawns on the seventh rank, by capture or by a step.
template <Colour Us>
Move* addQueenPromotions(const Context& c, Move* list) {
  for (Bitboard pawns = c.unpinned(Pawn) & relativeRankMask(Us, 6); pawns != 0;) {
    const Bitboard pawn = pawns & (~pawns + 1);
    const Square from = popLowest(pawns);
    const Bitboard west = pawnAttacksWest(Us, pawn) & c.victims;
    const Bitboard east = pawnAttacksEast(Us, pawn) & c.victims;
    const Bitboard step = shiftForward(Us, pawn) & ~c.board.occupied;
    for (const Bitboard destination : {west, east, step}) {
      if (destination == 0) continue;
      *list++ = withPromotion(c.moveTo(from, lowestSquare(destination)), Queen);
    }
  }
  return list;
}

template <Colour Us>
Move* addPawnCaptures(const Context& c, Move* list, Bitboard targets) {
  constexpr int Push = pushOf(Us);
  const Bitboard unpinned = c.unpinned(Pawn);
  const Bitboard empty = ~c.board.occupied;
  Bitboard toSeventh = shiftForward(Us, unpinned & relativeRankMask(Us, 5)) & empty;
  toSeventh &= shiftForward(Us ^ 1, empty);
  for (; toSeventh != 0;) {
    const Square to = popLowest(toSeventh);
    *list++ = makeQuiet(to - Push, to);
  }
  for (Bitboard pawns = c.board.own().bb[Pawn] & c.pinned; pawns != 0;) {
    const Square from = popLowest(pawns);
    if (const Bitboard capture = pinnedPawnCapture(c, from)) {
      list = addPawnMove(list, c.moveTo(from, lowestSquare(capture)));
    }
  }
  if (c.board.epSquare != 0) list = addEnPassant(c.board, list);
  list = addQueenPromotions<Us>(c, list);
  const Bitboard others = unpinned & ~relativeRankMask(Us, 6);
  list = addPawnSet(c, list, pawnAttacksWest(Us, others) & targets, Push - 1);
  return addPawnSet(c, list, pawnAttacksEast(Us, others) & targets, Push + 1);
}

template <Colour Us>
Move* generateCapturesFor(const Board& board, Move* list, Bitboard wanted) {
  const Context c(board);
  const Side& us = board.own();
  const Bitboard targets = wanted & c.victims;
  list = addPawnCaptures<Us>(c, list, targets);
  list = addKnights(c, list, targets);
  list = addSliders<Diagonal>(c, list, us.bb[Bishop], targets);
  list = addSliders<Straight>(c, list, us.bb[Rook], targets);
  list = addSliders<Both>(c, list, us.bb[Queen], targets);
  return addMoves(c, list, c.king, kingAttacks[c.king] & targets & ~board.enemyAttacks);
}

}  // namespace

Move* generateMoves(const Board& board, Move* list) {
  assert(!board.isInCheck());
  return board.stm == White ? generateMovesFor<White>(Context(board), list)
                            : generateMovesFor<Black>(Context(board), list);
}

Move* generateEvasions(const Board& board, Move* list) {
  assert(board.isInCheck());
  return board.stm == White ? generateEvasionsFor<White>(Context(board), list)
                            : generateEvasionsFor<Black>(Context(board), list);
}

Move* generateCaptures(const Board& board, Move* list, Bitboard targets) {
  assert(!board.isInCheck());
  return board.stm == White ? generateCapturesFor<White>(board, list, targets)
                            : generateCapturesFor<Black>(board, list, targets);
}

Move* generateLegal(Board& board, Move* list) {
  updateAttackInfo(board);
  return board.isInCheck() ? generateEvasions(board, list) : generateMoves(board, list);
}

int countLegal(const Board& board) {
  const Context c(board, attacksBy(board, board.stm ^ 1), blockersOf(board, board.stm));
  const bool inCheck = contains(c.attacked, c.king);
  if (board.stm == White) {
    return (inCheck ? generateEvasionsFor<White>(c, MoveCount{})
                    : generateMovesFor<White>(c, MoveCount{}))
        .moves;
  }
  return (inCheck ? generateEvasionsFor<Black>(c, MoveCount{})
                  : generateMovesFor<Black>(c, MoveCount{}))
      .moves;
}

Square usableEpSquare(const Board& board) {
  const Square victim = board.epSquare;
  if (victim == 0 || relativeRank(board.stm, victim) != 4) return 0;
  const int push = pushOf(board.stm);
  const Bitboard passed = bit(victim + push) | bit(victim + 2 * push);
  const bool isPawn = board.squares[static_cast<unsigned>(victim)] == makeCode(board.stm ^ 1, Pawn);
  return isPawn && (board.occupied & passed) == 0 ? victim : 0;
}

Bitboard findCheckers(const Board& board) {
  const Side& enemy = board.enemy();
  const Square king = board.own().kingSquare;
  return (pawnAttacks[board.stm][king] & enemy.bb[Pawn]) |
         (knightAttacks[king] & enemy.bb[Knight]) |
         (bishopAttacks(king, board.occupied) & (enemy.bb[Bishop] | enemy.bb[Queen])) |
         (rookAttacks(king, board.occupied) & (enemy.bb[Rook] | enemy.bb[Queen]));
}

namespace {

bool isLegalEnPassant(const Board& board, Move move) {
  if (board.isInCheck() && answerableChecker(board) != bit(board.epSquare)) return false;
  Move candidates[2];
  const Move* end = addEnPassant(board, candidates);
  for (const Move* candidate = candidates; candidate != end; ++candidate) {
    if (*candidate == move) return true;
  }
  return false;
}

bool isLegalCastling(const Board& board, Move move) {
  for (const Wing wing : {ShortWing, LongWing}) {
    if (move == castlingMove(board.stm, wing)) return canCastle(board, board.enemyAttacks, wing);
  }
  return false;
}

// Whether a pawn moves like this and the move's flags are right.
bool isPawnStep(const Board& board, Move move, Square from, Square to, PieceCode captured) {
  const int push = pushOf(board.stm);
  Move flags = 0;
  if (captured != 0) {
    if (!contains(pawnAttacks[board.stm][from], to)) return false;
  } else if (to == from + 2 * push) {
    if (relativeRank(board.stm, from) != 1 || contains(board.occupied, from + push)) return false;
    flags = DoubleStepFlag;
  } else if (to != from + push) {
    return false;
  }
  if (contains(LastRanks, to)) {
    const int type = promotionOf(move);
    if (type < Knight || type > Queen) return false;
    flags = move & PromotionMask;
  }
  return move == (makeCapture(from, to, captured) | flags);
}

bool isPieceStep(const Board& board, int type, Square from, Square to) {
  switch (type) {
    case Knight:
      return contains(knightAttacks[from], to);
    case Bishop:
      return contains(bishopAttacks(from, board.occupied), to);
    case Rook:
      return contains(rookAttacks(from, board.occupied), to);
    case Queen:
      return contains(queenAttacks(from, board.occupied), to);
    case King:
      return contains(kingAttacks[from] & ~board.enemyAttacks, to);
    default:
      return false;
  }
}

// Whether the king is safe after this step of another man.
bool leavesKingSafe(const Board& board, Square from, Square to) {
  const Square king = board.own().kingSquare;
  const bool pinned = contains(board.blockers[static_cast<unsigned>(board.stm)], from);
  if (!board.isInCheck()) return !pinned || contains(line[from][king], to);
  if (pinned) return false;
  const Bitboard checker = answerableChecker(board);
  if (checker == 0) return false;
  return contains(between[lowestSquare(checker)][king] | checker, to);
}

}  // namespace

bool isLegalMove(const Board& board, Move marked) {
  const Move move = marked & ~MarkFlag;
  const Square from = fromOf(move);
  const Square to = toOf(move);
  if ((from | to) > 63) return false;
  const PieceCode piece = board.squares[static_cast<unsigned>(from)];
  if (!belongsTo(piece, board.stm)) return false;
  if (isEnPassant(move)) return isLegalEnPassant(board, move);
  if (isCastling(move)) return isLegalCastling(board, move);

  const PieceCode captured = board.squares[static_cast<unsigned>(to)];
  if (captured != capturedOf(move)) return false;
  if (captured != 0 && (belongsTo(captured, board.stm) || typeOf(captured) == King)) return false;
  const int type = typeOf(piece);
  if (type == Pawn) {
    if (!isPawnStep(board, move, from, to, captured)) return false;
  } else if (move != makeCapture(from, to, captured) || !isPieceStep(board, type, from, to)) {
    return false;
  }
  return type == King || leavesKingSafe(board, from, to);
}

}  // namespace quill
