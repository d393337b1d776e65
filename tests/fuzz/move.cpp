// The number of a position, any 32 bits as a move, and any text as one.
#include <algorithm>
#include <cstring>

#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "fuzz/fuzz.h"

namespace {

using namespace quill;

constexpr const char* Fens[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
    "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3",
    "4k3/8/8/8/4r3/5n2/3Q4/3RK1NR w - - 0 1",
    "R6R/3Q4/1Q4Q1/4Q3/2Q4Q/Q4Q2/pp1Q4/kBNN1KB1 w - - 0 1",
    "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1",
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::initOnce();
  if (size < 1 + sizeof(Move)) return 0;
  Board board;
  FUZZ_CHECK(setFen(board, Fens[data[0] % std::size(Fens)], fuzz::nowhere()));
  Move move;
  std::memcpy(&move, data + 1, sizeof move);
  Move moves[MaxMoves];
  const Move* const end = generateLegal(board, moves);
  const auto isInList = [&](Move wanted) {
    return std::any_of(moves, const_cast<Move*>(end),
                       [wanted](Move legal) { return isSameMove(legal, wanted); });
  };
  FUZZ_CHECK(isLegalMove(board, move) == isInList(move));

  const std::string text(fuzz::textOf(data + 1 + sizeof move, size - 1 - sizeof move));
  const Move parsed = parseMove(board, text.c_str(), fuzz::nowhere());
  FUZZ_CHECK(parsed == NoMove || isInList(parsed));
  return 0;
}
