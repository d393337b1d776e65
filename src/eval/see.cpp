#include "eval/see.h"

#include <algorithm>

#include "board/attacks.h"

namespace quill {

namespace {

// What a pawn wins by promoting while it captures, and what it is worth on the square from then on.
constexpr int PromotionGain = 7;

constexpr Bitboard LastRanks = rankMask(0) | rankMask(7);

// The captures on one square, in progress.
struct Exchange {
  const Board& board;
  Square square;
  Bitboard attackers;  // pieces that may still capture; each leaves when it has captured
  Bitboard screens;    // pieces that only stand in the way of sliders
};

// Takes the side's least valuable attacker of the square off the record and returns its type,
// NoPiece when there is none. That opens the line for a slider behind it.
int takeLeastAttacker(Exchange& exchange, Colour side) {
  const Side& own = exchange.board.side[side];
  const Square square = exchange.square;
  const auto take = [&exchange](Bitboard candidates) {
    exchange.attackers &= ~(candidates & (~candidates + 1));
  };

  if (const Bitboard pawns = pawnAttacks[side ^ 1][square] & own.bb[Pawn] & exchange.attackers) {
    take(pawns);
    return Pawn;
  }
  if (const Bitboard knights = knightAttacks[square] & own.bb[Knight] & exchange.attackers) {
    take(knights);
    return Knight;
  }
  const Bitboard occupancy = exchange.attackers | exchange.screens;
  const Bitboard diagonal = bishopAttacks(square, occupancy) & exchange.attackers;
  if (const Bitboard bishops = diagonal & own.bb[Bishop]) {
    take(bishops);
    return Bishop;
  }
  const Bitboard straight = rookAttacks(square, occupancy) & exchange.attackers;
  if (const Bitboard rooks = straight & own.bb[Rook]) {
    take(rooks);
    return Rook;
  }
  if (const Bitboard queens = (diagonal | straight) & own.bb[Queen]) {
    take(queens);
    return Queen;
  }
  // Neither king may capture on a square that both of them guard.
  const Bitboard king = kingAttacks[square] & own.bb[King] & exchange.attackers;
  if (king != 0 && (kingAttacks[square] & exchange.board.side[side ^ 1].bb[King]) == 0) {
    take(king);
    return King;
  }
  return NoPiece;
}

// The best that the side can reach from its balance when both sides in turn capture on the square
// or stop. Fail-soft: a result below alpha is an upper bound.
int swap(Exchange& exchange, Colour side, int balance, int victim, int alpha, int beta) {
  if (balance + victim < alpha) return balance + victim;
  const int attacker = takeLeastAttacker(exchange, side);
  if (attacker == NoPiece) return balance;
  int value = SeeValue[attacker];
  if (attacker == Pawn && contains(LastRanks, exchange.square)) {
    value = PromotionGain;
    victim += PromotionGain;
  }
  return std::max(balance, -swap(exchange, side ^ 1, -(balance + victim), value, -beta, -alpha));
}

// The pieces alone between the king and one of the sliders on its lines.
Bitboard soleScreens(Square king, Bitboard sliders, Bitboard occupancy) {
  Bitboard screens = 0;
  while (sliders != 0) {
    const Bitboard standing = between[king][popLowest(sliders)] & occupancy;
    if (!moreThanOne(standing)) screens |= standing;
  }
  return screens;
}

// The opponent's pieces that can't recapture because they are pinned, or will be by the move.
Bitboard heldByPins(const Board& board, Colour us, Square from, Square to, Bitboard occupancy) {
  const Side& own = board.side[us];
  const Side& enemy = board.side[us ^ 1];
  const Square king = enemy.kingSquare;
  Bitboard pinned = board.blockers[us ^ 1];
  // The move uncovers a check, which must be answered: only the king may still capture.
  if (contains(pinned, from)) return enemy.bb[0] & ~enemy.bb[King];

  // When the mover leaves a line of the king, an enemy piece may be left alone on it.
  if (contains(bishopLines[king], from) && !contains(bishopLines[king], to)) {
    pinned |= soleScreens(king, (own.bb[Bishop] | own.bb[Queen]) & bishopLines[king], occupancy);
  } else if (contains(rookLines[king], from) && !contains(rookLines[king], to)) {
    pinned |= soleScreens(king, (own.bb[Rook] | own.bb[Queen]) & rookLines[king], occupancy);
  }
  return pinned & enemy.bb[0] & ~between[to][king];
}

}  // namespace

int see(const Board& board, Move move) {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  const PieceCode mover = board.squares[from] != 0 ? board.squares[from] : board.squares[to];
  const Colour us = belongsTo(mover, White) ? White : Black;
  const int captured = capturedType(move);

  int won = SeeValue[captured];
  int risked = SeeValue[typeOf(mover)];
  if (won > risked) return won - risked;
  if (typeOf(mover) == Pawn && contains(LastRanks, to)) {
    won += PromotionGain;
    risked += PromotionGain;
  }
  // An enemy that attacks neither the origin nor the destination can't recapture.
  if (us == board.stm && ((bit(from) | bit(to)) & board.enemyAttacks) == 0) return won;
  // Taking a pawn one step from promotion saves a queen.
  if (captured == Pawn && relativeRank(us ^ 1, to) == 6) {
    won += PromotionGain;
    if (won > risked) return won - risked;
  }

  const Bitboard occupancy = board.occupied & ~bit(from);
  const Bitboard held = heldByPins(board, us, from, to, occupancy);
  Exchange exchange{board, to, occupancy & ~held, occupancy & held};
  return -swap(exchange, us ^ 1, -won, risked, 0, 1);
}

int seeSquare(const Board& board, Square square) {
  const PieceCode code = board.squares[square];
  const Colour opponent = belongsTo(code, White) ? Black : White;
  const int value = SeeValue[typeOf(code)];
  const Bitboard held = board.side[opponent].bb[0] & board.blockers[opponent];
  Exchange exchange{board, square, board.occupied & ~held, held};
  return -swap(exchange, opponent, 0, value, 0, value);
}

}  // namespace quill
