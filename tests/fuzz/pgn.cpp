// A collection of games, whose moves are played as far as they go.
#include "quill_book/pgn_reader.h"

#include <sstream>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/notation.h"
#include "fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quill;
  fuzz::initOnce();
  std::istringstream in{std::string(fuzz::textOf(data, size))};
  constexpr int MaxPly = 40;
  PgnReader reader(in, MaxPly);
  PgnGame game;
  while (reader.next(game)) {
    FUZZ_CHECK(game.moves.size() <= MaxPly);
    Board board;
    const char* const fen = game.fen.empty() ? StartPosition : game.fen.c_str();
    if (!setFen(board, fen, fuzz::nowhere())) continue;
    for (const PgnMove& text : game.moves) {
      const Move move = parseMove(board, text.text.c_str(), fuzz::nowhere());
      if (move == NoMove) break;
      makeMove(board, move);
      updateAttackInfo(board);
    }
    if (game.error) printable(game.error->reason);
  }
  FUZZ_CHECK(reader.bytes() <= size);
  return 0;
}
