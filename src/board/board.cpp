#include "board/board.h"

#include <algorithm>
#include <cassert>
#include <cstdio>

#include "board/zobrist.h"

namespace quill {

void Board::clear() {
  side = {};
  squares = {};
  occupied = 0;
  key = 0;
  static_cast<UndoInfo&>(*this) = {};
  stm = White;
  ply = 0;
  plyOffset = 0;
  moves.fill(0);
  keys.fill(0);
}

void Board::add(Colour colour, int type, Square square) {
  if (square < 0 || square > 63) {
    std::fprintf(stderr, "add: illegal piece location: %i\n", square);
    return;
  }
  const PieceCode code = makeCode(colour, type);
  Side& us = side[static_cast<unsigned>(colour)];
  us.bb[0] ^= bit(square);
  us.bb[static_cast<unsigned>(type)] ^= bit(square);
  squares[static_cast<unsigned>(square)] = code;
  occupied = side[0].bb[0] | side[1].bb[0];
  if (type == King) us.kingSquare = square;
  key ^= pieceKey(code, square);
  if (type == Pawn) pawnKey ^= pieceKey(code, square);
  us.material += MaterialIncrement[static_cast<unsigned>(type)];
}

void Board::copyFrom(const Board& other) {
  if (this == &other) return;
  static_cast<Placement&>(*this) = other;
  static_cast<UndoInfo&>(*this) = other;
  stm = other.stm;
  ply = other.ply;
  plyOffset = other.plyOffset;
  const std::size_t used = static_cast<std::size_t>(ply) + 1;
  std::copy_n(other.moves.begin(), used, moves.begin());
  std::copy_n(other.keys.begin(), used, keys.begin());
}

void rebaseStacks(Board& board) {
  constexpr int DisplayedPlies = 24;
  constexpr int MostKept = 512;
  if (board.ply < StackSize - SearchHeadroom) return;
  const int kept = std::clamp(board.quietPlies(), DisplayedPlies, MostKept);
  const int dropped = (board.ply - kept) & ~1;  // keeps the parity of ply
  std::copy(board.moves.begin() + dropped, board.moves.begin() + board.ply + 1,
            board.moves.begin());
  std::copy(board.keys.begin() + dropped, board.keys.begin() + board.ply + 1, board.keys.begin());
  board.ply -= dropped;
  board.plyOffset += dropped;
  board.lastIrreversible -= dropped;
}

bool isConsistent(const Board& board) {
  Board fresh;
  for (Square square = 0; square < 64; ++square) {
    const PieceCode code = board.squares[static_cast<unsigned>(square)];
    if (code == 0) continue;
    const Colour colour = belongsTo(code, Black) ? Black : White;
    if (typeOf(code) < Pawn || typeOf(code) > King || code != makeCode(colour, typeOf(code))) {
      return false;
    }
    fresh.add(colour, typeOf(code), square);
  }
  fresh.key ^= castleKey[board.castling & 15];
  if (board.epSquare != 0) fresh.key ^= enPassantKey(board.epSquare);
  for (unsigned colour = 0; colour < 2; ++colour) {
    const Side& kept = board.side[colour];
    const Side& expected = fresh.side[colour];
    if (kept.bb != expected.bb || kept.material != expected.material) return false;
    if (kept.bb[King] != bit(kept.kingSquare)) return false;
  }
  return board.occupied == fresh.occupied && board.key == fresh.key &&
         board.pawnKey == fresh.pawnKey && (board.stm == White || board.stm == Black) &&
         board.ply >= 0 && board.ply < StackSize && board.lastIrreversible <= board.ply;
}

}  // namespace quill
