// The random keys whose XOR is the key of a position. initZobrist fills them once, from a fixed
// seed, so that keys are the same on every run; read-only afterwards.
#pragma once

#include "board/codes.h"

namespace quill {

namespace detail {

struct ZobristTables {
  std::uint64_t zobrist[16][64];
  std::uint64_t castleKey[16];
};

extern ZobristTables zobristStore;  // written by initZobrist alone

}  // namespace detail

// To be called once, before any Board is used.
void initZobrist();

// [piece code & 15][square]: rows 9..14 are white pieces, rows 1..6 black ones. Row 0 has another
// use: entries 0..7 are the en-passant files, 8..11 the castling rights K, k, Q, q.
inline constexpr const auto& zobrist = detail::zobristStore.zobrist;
// By rights value 0..15: the XOR of the keys of the single rights.
inline constexpr const auto& castleKey = detail::zobristStore.castleKey;

inline std::uint64_t pieceKey(PieceCode code, Square square) { return zobrist[code & 15][square]; }
inline std::uint64_t enPassantKey(Square square) { return zobrist[0][fileOf(square)]; }

}  // namespace quill
