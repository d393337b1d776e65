#include "support/play.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/notation.h"

namespace quill::test {

Board boardOf(const std::string& fen) {
  Board board;
  EXPECT_TRUE(setFen(board, fen.c_str())) << fen;
  return board;
}

Move moveOf(Board& board, const std::string& squares) {
  const Square from = makeSquare(squares[0] - 'a', squares[1] - '1');
  const Square to = makeSquare(squares[2] - 'a', squares[3] - '1');
  const int promotion =
      squares.size() > 4 ? static_cast<int>(std::string(" pnbrq").find(squares[4])) : Queen;
  for (const Move move : legalMovesOf(board)) {
    if (fromOf(move) == from && toOf(move) == to &&
        (!isPromotion(move) || promotionOf(move) == promotion)) {
      return move;
    }
  }
  ADD_FAILURE() << squares << " is not legal in " << getFen(board).text();
  return NoMove;
}

void playMoves(Board& board, const std::string& texts) {
  std::istringstream words(texts);
  for (std::string text; words >> text;) {
    const Move move = parseMove(board, text.c_str());
    ASSERT_NE(move, NoMove) << text << " in " << getFen(board).text();
    rebaseStacks(board);
    makeMove(board, move);
    updateAttackInfo(board);
  }
}

std::vector<Move> legalMovesOf(Board& board) {
  Move list[MaxMoves];
  Move* const end = generateLegal(board, list);
  return {list, end};
}

std::vector<Move> capturesOf(const Board& board, Bitboard targets) {
  Move list[MaxMoves];
  return {list, generateCaptures(board, list, targets)};
}

bool isOneOf(const std::vector<Move>& moves, Move move) {
  return std::any_of(moves.begin(), moves.end(), [move](Move m) { return isSameMove(m, move); });
}

}  // namespace quill::test
