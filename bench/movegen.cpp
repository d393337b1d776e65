// Speed of the move generators and of the legality test.
#include <benchmark/benchmark.h>

#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/movegen.h"
#include "board/perft.h"
#include "board/zobrist.h"

namespace quill {
namespace {

constexpr const char* QuietFens[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -",
};
constexpr const char* CheckFens[] = {
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -",
    "rnbqk1nr/pppp1ppp/8/4p3/1b2P3/3P4/PPP2PPP/RNBQKBNR w KQkq -",
    "4k3/8/8/8/4r3/5n2/3Q4/3RK1NR w - -",
};

template <std::size_t Size>
std::vector<Board> boards(const char* const (&fens)[Size]) {
  initTables();
  initZobrist();
  std::vector<Board> all(Size);
  for (std::size_t i = 0; i < Size; ++i) setFen(all[i], fens[i]);
  return all;
}

// Runs a generator over all positions; counts moves.
template <typename Generator>
void generateAll(benchmark::State& state, const std::vector<Board>& positions, Generator generate) {
  Move list[MaxMoves];
  std::int64_t moves = 0;
  for (auto _ : state) {
    for (const Board& board : positions) {
      moves += generate(board, list) - list;
      benchmark::DoNotOptimize(list);
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(moves);
}

void benchMoves(benchmark::State& state) { generateAll(state, boards(QuietFens), generateMoves); }
BENCHMARK(benchMoves)->Name("generateMoves");

void benchCaptures(benchmark::State& state) {
  generateAll(state, boards(QuietFens), [](const Board& board, Move* list) {
    return generateCaptures(board, list, board.enemy().bb[0]);
  });
}
BENCHMARK(benchCaptures)->Name("generateCaptures");

void benchEvasions(benchmark::State& state) {
  generateAll(state, boards(CheckFens), generateEvasions);
}
BENCHMARK(benchEvasions)->Name("generateEvasions");

void benchIsLegalMove(benchmark::State& state) {
  Board board = boards(QuietFens)[1];
  Move list[MaxMoves];
  const Move* const end = generateLegal(board, list);
  for (auto _ : state) {
    for (const Move* move = list; move != end; ++move) {
      benchmark::DoNotOptimize(isLegalMove(board, *move));
    }
  }
  state.SetItemsProcessed(state.iterations() * (end - list));
}
BENCHMARK(benchIsLegalMove)->Name("isLegalMove");

void benchPerft(benchmark::State& state) {
  Board board = boards(QuietFens)[1];
  std::int64_t leaves = 0;
  for (auto _ : state) leaves += static_cast<std::int64_t>(perft(board, 4));
  state.SetItemsProcessed(leaves);
}
BENCHMARK(benchPerft)->Name("perft/4")->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quill
