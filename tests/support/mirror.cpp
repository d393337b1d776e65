#include "support/mirror.h"

#include "board/make_move.h"
#include "board/movegen.h"
#include "board/zobrist.h"

namespace quill::test {

Board mirrored(const Board& board) {
  Board result;
  for (Square square = A1; square <= H8; ++square) {
    const PieceCode code = board.squares[static_cast<unsigned>(square)];
    if (code != 0) result.add(belongsTo(code, White) ? Black : White, typeOf(code), square ^ 56);
  }
  result.stm = board.stm ^ 1;
  // White's rights are the even bits, Black's the odd ones.
  const unsigned rights = board.castling;
  result.castling = static_cast<std::uint8_t>(((rights & 5) << 1) | ((rights & 10) >> 1));
  result.key ^= castleKey[result.castling];
  if (board.epSquare != 0) {
    result.epSquare = static_cast<std::uint8_t>(board.epSquare ^ 56);
    result.key ^= enPassantKey(result.epSquare);
  }
  updateAttackInfo(result);
  return result;
}

Board sparsePosition(RandomPositions& random) {
  for (;;) {
    Board board;
    const auto addSomewhere = [&](Colour colour, int type) {
      const Square square = static_cast<Square>(random.below(64));
      const bool isLastRank = rankOf(square) == 0 || rankOf(square) == 7;
      if (!contains(board.occupied, square) && !(type == Pawn && isLastRank))
        board.add(colour, type, square);
    };
    board.add(White, King, static_cast<Square>(random.below(64)));
    addSomewhere(Black, King);
    if (board.side[Black].bb[King] == 0) continue;
    for (auto men = random.below(5); men > 0; --men) {
      // Every other man is a pawn, as in most endings.
      const int type = random.below(2) == 0 ? Pawn : Knight + static_cast<int>(random.below(4));
      addSomewhere(static_cast<Colour>(random.below(2)), type);
    }
    board.stm = static_cast<Colour>(random.below(2));
    if ((attacksBy(board, board.stm) & board.enemy().bb[King]) != 0) continue;
    updateAttackInfo(board);
    return board;
  }
}

}  // namespace quill::test
