// How the threads of a search share its work: the benchmark's positions, each with an empty table.
//
//   split_count [THREADS [DEPTH]]     4 threads and depth 9, if not told otherwise
//
// attempts: nodes that were to be split. fruitless: those of them that nobody came for. joins:
// helpers that came to a split point; empty: those that found no move left there. dropped: threads
// that were given a split point and did not come, since no move was left before they woke up.
// locks: how often the lock of the whole pool was asked for, and how often in a second.
#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "eval/weights.h"
#include "platform/clock.h"
#include "search/tt.h"
#include "shell/bench.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace {

using namespace quill;

constexpr std::uint64_t TableKilobytes = 64 * 1024;

struct Counts {
  std::uint64_t attempts = 0;
  std::uint64_t splits = 0;
  std::uint64_t joins = 0;
  std::uint64_t emptyJoins = 0;
  std::uint64_t drops = 0;
  std::uint64_t kills = 0;
  std::uint64_t locks = 0;
  std::uint64_t nodes = 0;

  void add(const Worker& worker) {
    attempts += worker.splitAttempts;
    splits += worker.splits;
    joins += worker.joins;
    emptyJoins += worker.emptyJoins;
    drops += worker.drops;
    kills += worker.kills.load();
    locks += worker.poolLocks;
    nodes += worker.stats.searched();
  }
};

double percent(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 0.0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

}  // namespace

int main(int argc, char** argv) {
  const int threads = argc > 1 ? std::atoi(argv[1]) : 4;
  const int depth = argc > 2 ? std::atoi(argv[2]) : 9;
  if (argc > 3 || threads < 1 || threads > MaxThreads || depth < 1) {
    std::fprintf(stderr, "usage: split_count [THREADS [DEPTH]]\n");
    return 2;
  }
  initTables();
  initZobrist();
  setLogStream(nullptr);
  const auto tables = std::make_unique<EvalTables>();
  Tt tt;
  tt.resize(TableKilobytes);
  TimeControl timeControl;
  ThreadPool pool(tt, timeControl, *tables);
  pool.setThreadCount(threads);
  timeControl.setMoveTime(TimeControl::NoLimit);
  timeControl.configure({.depth = depth});

  Counts sum;
  std::uint32_t ms = 0;
  for (const char* fen : benchPositions()) {
    setFen(pool.board(), fen);
    tt.clear();
    pool.clearEvaluators();
    const std::uint32_t start = platform::tickCountMs();
    pool.startSearch(nullptr, true);
    pool.waitIdle();
    ms += platform::tickCountMs() - start;
    for (const auto& worker : pool.state.workers) sum.add(*worker);
  }
  ms = std::max(ms, 1u);
  std::printf("threads %d, depth %d, %" PRIu32 " ms, %" PRIu64 " nodes, %" PRIu64 " nodes/s\n",
              threads, depth, ms, sum.nodes, sum.nodes * 1000 / ms);
  std::printf("attempts %" PRIu64 ", splits %" PRIu64 ", fruitless %" PRIu64 "\n", sum.attempts,
              sum.splits, sum.attempts - sum.splits);
  std::printf("joins %" PRIu64 ", empty %" PRIu64 " (%.1f %%), dropped %" PRIu64 ", kills %" PRIu64
              "\n",
              sum.joins, sum.emptyJoins, percent(sum.emptyJoins, sum.joins), sum.drops, sum.kills);
  std::printf("locks %" PRIu64 ", in a second %" PRIu64 "\n", sum.locks, sum.locks * 1000 / ms);
}
