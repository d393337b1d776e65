// The transposition table: probes that hit and miss, and stores, all over a table that is much
// larger than the caches.
#include <benchmark/benchmark.h>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/movegen.h"
#include "board/zobrist.h"
#include "eval/weights.h"
#include "search/tt.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill {
namespace {

constexpr std::uint64_t TableKilobytes = 64 * 1024;
constexpr unsigned Keys = 1 << 16;

struct Engine {
  Engine() {
    initTables();
    initZobrist();
    setLogStream(nullptr);
    tt.resize(TableKilobytes);
    setFen(pool.board(), "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -");
    Move list[MaxMoves];
    generateLegal(pool.board(), list);
    move = list[0];
  }

  // Gives the board key number i of a fixed pseudo-random sequence.
  void be(unsigned i) { pool.board().key = (i + 1) * 0x9E3779B97F4A7C15u; }

  EvalTables evalTables;
  Tt tt;
  TimeControl timeControl;
  ThreadPool pool{tt, timeControl, evalTables};
  Move move;
};

Engine& engine() {
  static Engine instance;
  return instance;
}

void fill() {
  Engine& e = engine();
  e.tt.clear();
  for (unsigned i = 0; i < Keys; ++i) {
    e.be(i);
    e.tt.storeScore(e.pool.state.master(), LowerBound, 5, 3, 25, e.move, 20);
  }
}

// First argument: the number of the first key looked up.
void probe(benchmark::State& state) {
  fill();
  Engine& e = engine();
  const auto offset = static_cast<unsigned>(state.range(0));
  unsigned i = 0;
  std::int64_t hits = 0;
  for (auto step : state) {
    e.be(offset + i++ % Keys);
    TtEntry entry;
    hits += e.tt.probe(e.pool.state.master(), entry) ? 1 : 0;
    benchmark::DoNotOptimize(entry);
  }
  state.SetItemsProcessed(state.iterations());
  state.counters["hits"] = static_cast<double>(hits) / static_cast<double>(state.iterations());
}
BENCHMARK(probe)->Name("probeHit")->Arg(0);
BENCHMARK(probe)->Name("probeMiss")->Arg(Keys);

void store(benchmark::State& state) {
  fill();
  Engine& e = engine();
  unsigned i = 0;
  for (auto step : state) {
    e.be(i++);
    e.tt.storeScore(e.pool.state.master(), UpperBound, static_cast<int>(i % 16), 3, 25, NoMove, 20);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(store);

}  // namespace
}  // namespace quill
