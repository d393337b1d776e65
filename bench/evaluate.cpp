// The evaluation of fixed positions: everything computed, with the pawns known, and from the cache.
#include "eval/evaluate.h"

#include <benchmark/benchmark.h>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"

namespace quill {
namespace {

constexpr const char* Positions[] = {
    // Middlegames, from all the pieces down to half of them.
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -",
    "2r3k1/1p3pp1/p2bp2p/3n4/3P4/P2B1N1P/1P3PP1/2R3K1 b - -",
    // Endings: rooks, pawns that race, a pawn that its king must escort.
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
    "8/pp3k2/2p5/5p1P/5P2/1P1K4/P7/8 w - -",
    "8/8/4k3/8/8/4K3/4P3/8 w - -",
};

struct Setup {
  explicit Setup(const benchmark::State& state) : evaluator(board, tables) {
    [[maybe_unused]] static const bool ready = (initTables(), initZobrist(), true);
    setFen(board, Positions[state.range(0)]);
    resizePawnHash(evaluator.pawnHash, 1024);
  }

  void forgetResult() {
    evaluator.evalCache[board.key ^ static_cast<std::uint64_t>(board.stm)].key = ~board.key;
  }
  void forgetPawns() {
    PawnHash& hash = evaluator.pawnHash;
    hash.table[board.pawnKey & hash.mask].key = ~board.pawnKey;
  }

  EvalTables tables;
  Board board;
  Evaluator evaluator;
};

void evaluateCold(benchmark::State& state) {
  Setup setup(state);
  for (auto step : state) {
    setup.forgetResult();
    setup.forgetPawns();
    benchmark::DoNotOptimize(evaluate(setup.evaluator));
  }
}
BENCHMARK(evaluateCold)->DenseRange(0, 5);

void evaluateKnownPawns(benchmark::State& state) {
  Setup setup(state);
  for (auto step : state) {
    setup.forgetResult();
    benchmark::DoNotOptimize(evaluate(setup.evaluator));
  }
}
BENCHMARK(evaluateKnownPawns)->DenseRange(0, 5);

void evaluateCached(benchmark::State& state) {
  Setup setup(state);
  for (auto step : state) benchmark::DoNotOptimize(evaluate(setup.evaluator));
}
BENCHMARK(evaluateCached)->DenseRange(0, 5);

}  // namespace
}  // namespace quill
