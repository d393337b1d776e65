#include "board/make_move.h"

#include <cassert>

#include "board/attacks.h"
#include "board/zobrist.h"

namespace quill {

namespace {

// Rights that survive a move from or to the square.
constexpr std::array<std::uint8_t, 64> CastleMask = [] {
  std::array<std::uint8_t, 64> mask{};
  mask.fill(0xFF);
  mask[A1] = static_cast<std::uint8_t>(~WhiteLong);
  mask[E1] = static_cast<std::uint8_t>(~(WhiteShort | WhiteLong));
  mask[H1] = static_cast<std::uint8_t>(~WhiteShort);
  mask[A8] = static_cast<std::uint8_t>(~BlackLong);
  mask[E8] = static_cast<std::uint8_t>(~(BlackShort | BlackLong));
  mask[H8] = static_cast<std::uint8_t>(~BlackShort);
  return mask;
}();

// Recomputes the whole board to compare with, in debug builds only.
void checkBoard([[maybe_unused]] const Board& board) { assert(isConsistent(board)); }

std::uint8_t castleMaskOf(Square square) { return CastleMask[static_cast<unsigned>(square)]; }
Bitboard& pieces(Side& side, int type) { return side.bb[static_cast<unsigned>(type)]; }
PieceCode& codeOn(Board& board, Square square) {
  return board.squares[static_cast<unsigned>(square)];
}

// Takes the captured piece out of the sets, the keys and the signature. Its code stays on the
// square for the caller to overwrite.
void removeCaptured(Board& board, Side& them, PieceCode captured, Square square) {
  const int type = typeOf(captured);
  them.bb[0] ^= bit(square);
  pieces(them, type) ^= bit(square);
  them.material -= MaterialIncrement[static_cast<unsigned>(type)];
  const std::uint64_t key = pieceKey(captured, square);
  board.key ^= key;
  if (type == Pawn) board.pawnKey ^= key;
}

void putBackCaptured(Board& board, Side& them, PieceCode captured, Square square) {
  const int type = typeOf(captured);
  codeOn(board, square) = captured;
  them.bb[0] ^= bit(square);
  pieces(them, type) ^= bit(square);
  them.material += MaterialIncrement[static_cast<unsigned>(type)];
}

// Moves a piece of `us` in the sets and on the squares, overwriting the code on `to`.
void slide(Board& board, Side& us, Square from, Square to) {
  const PieceCode code = codeOn(board, from);
  codeOn(board, to) = code;
  codeOn(board, from) = 0;
  const Bitboard both = bit(from) | bit(to);
  us.bb[0] ^= both;
  pieces(us, typeOf(code)) ^= both;
}

std::uint64_t slideKey(PieceCode code, Square from, Square to) {
  return pieceKey(code, from) ^ pieceKey(code, to);
}

void makeEnPassant(Board& board, Side& us, Side& them, Square from, Square to) {
  const PieceCode pawn = codeOn(board, from);
  const Square victim = to ^ 8;  // beside the capturing pawn's origin
  removeCaptured(board, them, codeOn(board, victim), victim);
  codeOn(board, victim) = 0;
  const std::uint64_t key = slideKey(pawn, from, to);
  board.key ^= key;
  board.pawnKey ^= key;
  slide(board, us, from, to);
  board.lastIrreversible = board.ply;
}

void makeCastling(Board& board, Side& us, Move move) {
  const CastleInfo& castle = CastleTable[board.stm][wingOf(move)];
  board.castling &= castleMaskOf(castle.kingFrom);
  board.key ^= slideKey(codeOn(board, castle.kingFrom), castle.kingFrom, castle.kingTo);
  board.key ^= slideKey(codeOn(board, castle.rookFrom), castle.rookFrom, castle.rookTo);
  us.kingSquare = castle.kingTo;
  slide(board, us, castle.kingFrom, castle.kingTo);
  slide(board, us, castle.rookFrom, castle.rookTo);
}

void makePromotion(Board& board, Side& us, Side& them, Move move) {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  const int type = promotionOf(move);
  if (isCapture(move)) {
    removeCaptured(board, them, capturedOf(move), to);
    board.castling &= castleMaskOf(to);
  }
  const std::uint64_t pawnKey = pieceKey(codeOn(board, from), from);
  board.key ^= pawnKey;
  board.pawnKey ^= pawnKey;
  codeOn(board, from) = 0;
  us.bb[0] ^= bit(from) | bit(to);
  us.bb[Pawn] ^= bit(from);
  pieces(us, type) ^= bit(to);
  const PieceCode promoted = makeCode(board.stm, type);
  codeOn(board, to) = promoted;
  board.key ^= pieceKey(promoted, to);
  us.material += MaterialIncrement[static_cast<unsigned>(type)] - MaterialIncrement[Pawn];
  board.lastIrreversible = board.ply;
}

void makeSpecial(Board& board, Side& us, Side& them, Move move) {
  if (isEnPassant(move)) {
    makeEnPassant(board, us, them, fromOf(move), toOf(move));
  } else if (isCastling(move)) {
    makeCastling(board, us, move);
  } else {
    makePromotion(board, us, them, move);
  }
}

// Whether the move is a double step past an enemy pawn that may now capture en passant.
bool opensEnPassant(const Board& board, const Side& them, Move move) {
  return (move & DoubleStepFlag) != 0 &&
         (pawnAttacks[board.stm][(fromOf(move) + toOf(move)) / 2] & them.bb[Pawn]) != 0;
}

void makeNormal(Board& board, Side& us, Side& them, Move move) {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  board.castling &= castleMaskOf(from);
  if (isCapture(move)) {
    board.lastIrreversible = board.ply;
    board.castling &= castleMaskOf(to);
    removeCaptured(board, them, capturedOf(move), to);
  }
  const PieceCode code = codeOn(board, from);
  if (from == us.kingSquare) us.kingSquare = to;
  slide(board, us, from, to);
  const std::uint64_t key = slideKey(code, from, to);
  board.key ^= key;
  if (typeOf(code) != Pawn) return;

  board.pawnKey ^= key;
  board.lastIrreversible = board.ply;
  if (opensEnPassant(board, them, move)) {
    board.epSquare = static_cast<std::uint8_t>(to);
    board.key ^= enPassantKey(to);
  }
}

// The change of the key by a promotion, castling or en passant, castling rights apart.
std::uint64_t specialKey(const Board& board, Move move) {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  const PieceCode code = board.squares[static_cast<unsigned>(from)];
  if (isEnPassant(move)) return slideKey(code, from, to) ^ pieceKey(capturedOf(move), to ^ 8);
  if (isCastling(move)) {
    const CastleInfo& castle = CastleTable[board.stm][wingOf(move)];
    return slideKey(makeCode(board.stm, King), castle.kingFrom, castle.kingTo) ^
           slideKey(makeCode(board.stm, Rook), castle.rookFrom, castle.rookTo);
  }
  const std::uint64_t key =
      pieceKey(code, from) ^ pieceKey(makeCode(board.stm, promotionOf(move)), to);
  return isCapture(move) ? key ^ pieceKey(capturedOf(move), to) : key;
}

void unmakeSpecial(Board& board, Side& us, Side& them, Move move) {
  const Square from = fromOf(move);
  const Square to = toOf(move);
  if (isEnPassant(move)) {
    putBackCaptured(board, them, capturedOf(move), to ^ 8);
    slide(board, us, to, from);
  } else if (isCastling(move)) {
    const CastleInfo& castle = CastleTable[board.stm][wingOf(move)];
    us.kingSquare = castle.kingFrom;
    slide(board, us, castle.kingTo, castle.kingFrom);
    slide(board, us, castle.rookTo, castle.rookFrom);
  } else {
    const int type = promotionOf(move);
    us.material += MaterialIncrement[Pawn] - MaterialIncrement[static_cast<unsigned>(type)];
    us.bb[0] ^= bit(from) | bit(to);
    us.bb[Pawn] ^= bit(from);
    pieces(us, type) ^= bit(to);
    codeOn(board, from) = makeCode(board.stm, Pawn);
    codeOn(board, to) = 0;
    if (isCapture(move)) putBackCaptured(board, them, capturedOf(move), to);
  }
}

}  // namespace

void makeMove(Board& board, Move move) {
  assert(board.ply < StackSize - 1);
  Side& us = board.side[static_cast<unsigned>(board.stm)];
  Side& them = board.side[static_cast<unsigned>(board.stm ^ 1)];
  board.keys[static_cast<unsigned>(board.ply)] = board.key;
  board.key ^= castleKey[board.castling];
  if (board.epSquare != 0) {
    board.key ^= enPassantKey(board.epSquare);
    board.epSquare = 0;
  }
  ++board.ply;
  board.moves[static_cast<unsigned>(board.ply)] = move;

  if ((move & SpecialMask) == 0) [[likely]] {
    makeNormal(board, us, them, move);
  } else {
    makeSpecial(board, us, them, move);
  }

  board.key ^= castleKey[board.castling];
  board.stm ^= 1;
  board.occupied = us.bb[0] | them.bb[0];
  checkBoard(board);
}

std::uint64_t keyAfter(const Board& board, Move move) {
  std::uint64_t key = board.key;
  if (board.epSquare != 0) key ^= enPassantKey(board.epSquare);
  if (move == NoMove) return key;
  const Square from = fromOf(move);
  const Square to = toOf(move);
  // The mask of `to` changes nothing without a capture: no right depends on an empty square.
  const unsigned kept = board.castling & castleMaskOf(from) & castleMaskOf(to);
  key ^= castleKey[board.castling] ^ castleKey[kept];
  if ((move & SpecialMask) != 0) [[unlikely]]
    return key ^ specialKey(board, move);
  key ^= slideKey(board.squares[static_cast<unsigned>(from)], from, to);
  if (isCapture(move)) key ^= pieceKey(capturedOf(move), to);
  if (opensEnPassant(board, board.enemy(), move)) key ^= enPassantKey(to);
  return key;
}

void unmakeMove(Board& board, Move move, const UndoInfo& undo) {
  assert(board.ply > 0);
  --board.ply;
  board.key = board.keys[static_cast<unsigned>(board.ply)];
  static_cast<UndoInfo&>(board) = undo;
  board.stm ^= 1;
  Side& us = board.side[static_cast<unsigned>(board.stm)];
  Side& them = board.side[static_cast<unsigned>(board.stm ^ 1)];
  const Square from = fromOf(move);
  const Square to = toOf(move);
  if ((move & SpecialMask) == 0) [[likely]] {
    if (to == us.kingSquare) us.kingSquare = from;
    slide(board, us, to, from);
    if (isCapture(move)) putBackCaptured(board, them, capturedOf(move), to);
  } else {
    unmakeSpecial(board, us, them, move);
  }
  board.occupied = us.bb[0] | them.bb[0];
  checkBoard(board);
}

void makeNullMove(Board& board) {
  assert(board.ply < StackSize - 1);
  board.keys[static_cast<unsigned>(board.ply)] = board.key;
  if (board.epSquare != 0) board.key ^= enPassantKey(board.epSquare);
  ++board.ply;
  board.lastIrreversible = board.ply;
  board.moves[static_cast<unsigned>(board.ply)] = NoMove;
  board.epSquare = 0;
  board.stm ^= 1;
}

void unmakeNullMove(Board& board, const UndoInfo& undo) {
  assert(board.ply > 0);
  --board.ply;
  board.key = board.keys[static_cast<unsigned>(board.ply)];
  static_cast<UndoInfo&>(board) = undo;
  board.stm ^= 1;
}

Bitboard attacksBy(const Board& board, Colour colour) {
  const Side& us = board.side[static_cast<unsigned>(colour)];
  const Bitboard occupancy =
      board.occupied ^ board.side[static_cast<unsigned>(colour ^ 1)].bb[King];
  Bitboard attacks = pawnSetAttacks(colour, us.bb[Pawn]) | kingAttacks[us.kingSquare];
  for (Bitboard set = us.bb[Knight]; set != 0;) attacks |= knightAttacks[popLowest(set)];
  for (Bitboard set = us.bb[Bishop] | us.bb[Queen]; set != 0;) {
    attacks |= bishopAttacks(popLowest(set), occupancy);
  }
  for (Bitboard set = us.bb[Rook] | us.bb[Queen]; set != 0;) {
    attacks |= rookAttacks(popLowest(set), occupancy);
  }
  return attacks;
}

Bitboard blockersOf(const Board& board, Colour colour) {
  const Square king = board.side[static_cast<unsigned>(colour)].kingSquare;
  const Side& them = board.side[static_cast<unsigned>(colour ^ 1)];
  const Bitboard queens = them.bb[Queen];
  Bitboard sliders = (rookLines[king] & (them.bb[Rook] | queens)) |
                     (bishopLines[king] & (them.bb[Bishop] | queens));
  Bitboard blockers = 0;
  while (sliders != 0) {
    const Bitboard screen = between[king][popLowest(sliders)] & board.occupied;
    if (!moreThanOne(screen)) blockers |= screen;
  }
  return blockers;
}

void updateAttackInfo(Board& board) {
  board.enemyAttacks = attacksBy(board, board.stm ^ 1);
  board.blockers[White] = blockersOf(board, White);
  board.blockers[Black] = blockersOf(board, Black);
}

void playMove(Board& board, Move move) {
  if (move == NoMove) {
    makeNullMove(board);
  } else {
    makeMove(board, move);
  }
}

}  // namespace quill
