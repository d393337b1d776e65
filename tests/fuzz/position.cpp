// A FEN text: what setFen accepts is a position in which everything works.
#include <cstring>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "eval/evaluate.h"
#include "eval/see.h"
#include "fuzz/fuzz.h"

namespace {

using namespace quill;

void checkMove(Board& board, Evaluator& evaluator, Move move) {
  FUZZ_CHECK(isLegalMove(board, move));
  char text[MoveTextSize];
  moveToSan(board, text, move);
  FUZZ_CHECK(isSameMove(parseMove(board, text, fuzz::nowhere()), move));
  see(board, move);
  const std::uint64_t key = keyAfter(board, move);
  const UndoInfo undo = board;
  makeMove(board, move);
  updateAttackInfo(board);
  FUZZ_CHECK(board.key == key);
  FUZZ_CHECK(std::abs(evaluate(evaluator)) < 10000);
  unmakeMove(board, move, undo);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::initOnce();
  static const EvalTables tables;
  static Board board;
  static Evaluator evaluator(board, tables);
  const std::string text(fuzz::textOf(data, size));
  if (!setFen(board, text.c_str(), fuzz::nowhere())) return 0;

  const EngineString fen = getFen(board);
  FUZZ_CHECK(std::abs(evaluate(evaluator)) < 10000);
  Move moves[MaxMoves];
  const Move* const end = generateLegal(board, moves);
  for (const Move* move = moves; move != end; ++move) checkMove(board, evaluator, *move);
  if (!board.isInCheck()) {
    const Move* const last = generateCaptures(board, moves, ~Bitboard{0});
    for (const Move* move = moves; move != last; ++move) FUZZ_CHECK(isLegalMove(board, *move));
  }
  // All moves have been taken back, and the text stands for the same position.
  FUZZ_CHECK(std::strcmp(getFen(board).text(), fen.text()) == 0);
  Board again;
  FUZZ_CHECK(setFen(again, fen.text(), fuzz::nowhere()));
  FUZZ_CHECK(again.key == board.key);
  return 0;
}
