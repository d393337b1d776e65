// Static exchange evaluation of every legal move, and of every own piece, in busy middlegames.
#include <benchmark/benchmark.h>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/movegen.h"
#include "board/zobrist.h"
#include "eval/see.h"

namespace quill {
namespace {

constexpr const char* Positions[] = {
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -",
    "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N2N2/PP2BPPP/R1BQ1RK1 b - -",
};

Board positionOf(const benchmark::State& state) {
  [[maybe_unused]] static const bool ready = (initTables(), initZobrist(), true);
  Board board;
  setFen(board, Positions[state.range(0)]);
  return board;
}

void seeOfMoves(benchmark::State& state) {
  Board board = positionOf(state);
  Move list[MaxMoves];
  const Move* const end = generateLegal(board, list);
  for (auto step : state) {
    for (const Move* move = list; move != end; ++move) benchmark::DoNotOptimize(see(board, *move));
  }
  state.SetItemsProcessed(state.iterations() * (end - list));
}
BENCHMARK(seeOfMoves)->DenseRange(0, 2);

void seeOfCaptures(benchmark::State& state) {
  Board board = positionOf(state);
  Move list[MaxMoves];
  const Move* const end = generateCaptures(board, list, board.enemy().bb[0]);
  for (auto step : state) {
    for (const Move* move = list; move != end; ++move) benchmark::DoNotOptimize(see(board, *move));
  }
  state.SetItemsProcessed(state.iterations() * (end - list));
}
BENCHMARK(seeOfCaptures)->DenseRange(0, 2);

void seeOfSquares(benchmark::State& state) {
  const Board board = positionOf(state);
  for (auto step : state) {
    for (Bitboard own = board.own().bb[0]; own != 0;) {
      benchmark::DoNotOptimize(seeSquare(board, popLowest(own)));
    }
  }
  state.SetItemsProcessed(state.iterations() * count(board.own().bb[0]));
}
BENCHMARK(seeOfSquares)->DenseRange(0, 2);

}  // namespace
}  // namespace quill
