#include "shell/bench.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <memory>

#include "board/fen.h"
#include "eval/weights.h"
#include "platform/clock.h"
#include "search/tt.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill {

namespace {

constexpr int SearchDepth = 7;
constexpr std::uint64_t TableKilobytes = 4096;
constexpr std::uint32_t NoClock = 0x7FFFFFFF;  // ms: 24 days

constexpr const char* Positions[] = {
    // Openings and middle games.
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq -",
    "r1bqkb1r/pppp1ppp/2n2n2/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R w KQkq -",
    "rnbqk2r/pp2ppbp/3p1np1/8/3NP3/2N1B3/PPP2PPP/R2QKB1R b KQkq -",
    "r2q1rk1/2p1bppp/p2p1n2/P2Pp3/p1P1P1b1/5N2/P2Q1PPP/RNB1R1K1 w - -",
    "r4rk1/pp2q1pp/2p2p2/3pNb2/P2PB3/4P3/1PQ2PPP/R4RK1 b - -",
    "r1bqr1k1/pppn1p1p/3p2p1/8/2PQP3/2N2P2/PP2B1PP/R4RK1 b - -",
    "r2rn1k1/pb2qppp/1pn1p3/4P3/2B1N3/BP3N2/P3QPPP/R4RK1 b - -",
    "r2qnrk1/p4pbp/1pb3p1/3pP3/P7/1QNBPP2/1P4PP/R1B2RK1 b - -",
    "2rq1rk1/1b2bppp/p2ppn2/1p6/3BPP2/2NB3Q/PPP3PP/R4RK1 w - -",
    "r1bq1rk1/pp2ppbp/2np2p1/2n5/P3PP2/N1P2N2/1PB3PP/R1B1QRK1 b - -",
    // Castling, pins, en passant, promotions.
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - -",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq -",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ -",
    "rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6",
    "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - -",
    // Attacks on the king and mates.
    "1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - -",
    "r1b1k2r/ppppnppp/2n2q2/2b5/3NP3/2P1B3/PP3PPP/RN1QKB1R w KQkq -",
    "3rn2k/ppb2rpp/2ppqp2/5N2/2P1P3/1P5Q/PB3PPP/3RR1K1 w - -",
    "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - -",
    // Endings: pawn races, wrong bishops, opposite bishops, rooks, bare pieces.
    "8/k7/3p4/p2P1p2/P2P1P2/8/8/K7 w - -",
    "8/p5k1/1p4p1/8/8/1P4P1/P5K1/8 w - -",
    "8/8/4k3/8/4P3/4K3/8/8 w - -",
    "8/7p/5k1P/8/8/5K2/8/6B1 w - -",
    "8/2k5/2p1b3/1p6/1P1B4/2P2K2/8/8 b - -",
    "8/8/1KP5/3r4/8/8/8/k7 w - -",
    "1r4k1/5ppp/8/8/P7/8/5PPP/R5K1 w - -",
    "8/8/8/3k4/8/2BN4/4K3/8 w - -",
    "4k3/8/8/8/3q4/8/PPP5/1K1R4 b - -",
    "8/6k1/6p1/5pPp/5P1P/4K3/8/4N2b w - -",
    // Nothing to search: mate, stalemate.
    "7k/5Q2/6K1/8/8/8/8/8 b - -",
    "6rk/5Npp/8/8/8/8/8/6K1 b - -",
};

}  // namespace

std::span<const char* const> benchPositions() { return Positions; }

std::uint64_t searchBenchPositions() {
  std::FILE* const log = logStream();
  setLogStream(nullptr);
  const auto tables = std::make_unique<EvalTables>();
  Tt tt;
  tt.resize(TableKilobytes);
  TimeControl timeControl;
  ThreadPool pool(tt, timeControl, *tables);
  pool.setThreadCount(1);
  timeControl.setMoveTime(NoClock);
  timeControl.configure({.depth = SearchDepth});

  std::uint64_t nodes = 0;
  for (const char* fen : Positions) {
    setFen(pool.board(), fen);
    tt.clear();
    pool.clearEvaluators();
    pool.startSearch(nullptr, true);
    pool.waitIdle();
    nodes += pool.state.searchedNodes();
  }
  setLogStream(log);
  return nodes;
}

bool runBench() {
  const std::uint32_t start = platform::tickCountMs();
  const std::uint64_t nodes = searchBenchPositions();
  if (nodes == 0) {
    std::fprintf(stderr, "bench: system grants no search thread\n");
    return false;
  }
  const std::uint32_t ms = std::max(platform::tickCountMs() - start, 1u);
  std::printf("%" PRIu32 " ms, %" PRIu64 " nodes %" PRIu64 " nps\n", ms, nodes, nodes * 1000 / ms);
  return true;
}

}  // namespace quill
