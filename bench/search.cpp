// Whole searches of fixed positions to a fixed depth, with one thread and from an empty table.
#include <benchmark/benchmark.h>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "eval/weights.h"
#include "search/tt.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill {
namespace {

constexpr int Depth = 8;
constexpr std::uint64_t TableKilobytes = 16 * 1024;

struct Position {
  const char* name;
  const char* fen;
};

constexpr Position Positions[] = {
    {"start", StartPosition},
    {"open", "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - -"},
    {"tactical", "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -"},
    {"closed", "r1bq1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N2N2/PP2BPPP/R1BQ1RK1 b - -"},
    {"rookEnding", "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -"},
};

void searchToDepth(benchmark::State& state) {
  [[maybe_unused]] static const bool ready =
      (initTables(), initZobrist(), setLogStream(nullptr), true);
  const Position& position = Positions[state.range(0)];
  const EvalTables evalTables;
  Tt tt;
  tt.resize(TableKilobytes);
  TimeControl timeControl;
  timeControl.setMoveTime(TimeControl::NoLimit);
  timeControl.configure({.depth = Depth});
  ThreadPool pool(tt, timeControl, evalTables);
  pool.setThreadCount(1);
  setFen(pool.board(), position.fen);
  std::uint64_t nodes = 0;
  for (auto step : state) {
    state.PauseTiming();
    tt.clear();
    pool.clearEvaluators();
    state.ResumeTiming();
    pool.startSearch(nullptr, true);
    pool.waitIdle();
    nodes += pool.state.searchedNodes();
  }
  state.SetLabel(position.name);
  state.counters["nodes"] =
      benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kAvgIterations);
  state.counters["nodes/s"] =
      benchmark::Counter(static_cast<double>(nodes), benchmark::Counter::kIsRate);
}
// The search runs on a thread of the pool, so real time is measured.
BENCHMARK(searchToDepth)->DenseRange(0, 4)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace quill
