// A move packed into 32 bits. 0 is no move and, on the move stack, a null move.
//
//   bits   field        meaning
//   0-7    to           destination; castling: the king's (g1, c1, g8 or c8)
//   8-15   from         origin; castling: the king's
//   16-23  captured     code of the captured piece, 0 for none; en passant: the pawn's code
//   24-26  promotion    type promoted to (Knight..Queen), 0 for none
//   27     en passant   the move captures en passant
//   28     castling     the move is castling
//   29     double step  a pawn advances two squares
//   30     mark         free for the search; the generators never set it
//   31                  always 0
#pragma once

#include "board/codes.h"

namespace quill {

using Move = std::uint32_t;

inline constexpr Move NoMove = 0;
inline constexpr Move EnPassantFlag = 0x08000000;
inline constexpr Move CastlingFlag = 0x10000000;
inline constexpr Move DoubleStepFlag = 0x20000000;
inline constexpr Move MarkFlag = 0x40000000;
// Promotion, en passant and castling take the slower path of make and unmake.
inline constexpr Move SpecialMask = 0x1F000000;
inline constexpr Move PromotionMask = 0x07000000;
inline constexpr Move CaptureMask = 0x00FF0000;
// Tactical moves: captures, promotions, en passant.
inline constexpr Move TacticalMask = 0x0FFF0000;
// Everything that tells one move from another: all but the search's mark.
inline constexpr Move IdentityMask = 0xBFFFFFFF;

constexpr Square toOf(Move move) { return static_cast<Square>(move & 0xFF); }
constexpr Square fromOf(Move move) { return static_cast<Square>((move >> 8) & 0xFF); }
constexpr PieceCode capturedOf(Move move) { return static_cast<PieceCode>((move >> 16) & 0xFF); }
constexpr int capturedType(Move move) { return static_cast<int>((move >> 16) & 7); }
constexpr int promotionOf(Move move) { return static_cast<int>((move >> 24) & 7); }

constexpr Move makeQuiet(Square from, Square to) { return static_cast<Move>((from << 8) | to); }
constexpr Move makeCapture(Square from, Square to, PieceCode captured) {
  return makeQuiet(from, to) | (static_cast<Move>(captured) << 16);
}
constexpr Move withPromotion(Move move, int type) { return move | (static_cast<Move>(type) << 24); }

constexpr bool isCapture(Move move) { return (move & CaptureMask) != 0; }
constexpr bool isPromotion(Move move) { return (move & PromotionMask) != 0; }
constexpr bool isEnPassant(Move move) { return (move & EnPassantFlag) != 0; }
constexpr bool isCastling(Move move) { return (move & CastlingFlag) != 0; }
constexpr bool isTactical(Move move) { return (move & TacticalMask) != 0; }
constexpr bool isQuiet(Move move) { return (move & TacticalMask) == 0; }
constexpr Move withoutMark(Move move) { return move & IdentityMask; }
constexpr bool isSameMove(Move a, Move b) { return ((a ^ b) & IdentityMask) == 0; }

}  // namespace quill
