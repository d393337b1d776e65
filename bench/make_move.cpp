// Speed of making and taking back moves, and of the attack information that follows each.
#include <benchmark/benchmark.h>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/zobrist.h"

namespace quill {
namespace {

// Every kind of move in one position.
constexpr char Fen[] = "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq -";

struct Position {
  Board board;
  Move list[MaxMoves];
  Move* end;

  Position() {
    initTables();
    initZobrist();
    setFen(board, Fen);
    end = generateLegal(board, list);
  }
  std::int64_t moves() const { return end - list; }
};

void benchMakeUnmake(benchmark::State& state) {
  Position position;
  Board& board = position.board;
  const UndoInfo undo = board;
  for (auto _ : state) {
    for (const Move* move = position.list; move != position.end; ++move) {
      makeMove(board, *move);
      benchmark::ClobberMemory();
      unmakeMove(board, *move, undo);
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * position.moves());
}
BENCHMARK(benchMakeUnmake)->Name("makeMove+unmakeMove");

void benchNullMove(benchmark::State& state) {
  Position position;
  const UndoInfo undo = position.board;
  for (auto _ : state) {
    makeNullMove(position.board);
    benchmark::ClobberMemory();
    unmakeNullMove(position.board, undo);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(benchNullMove)->Name("makeNullMove+unmakeNullMove");

void benchUpdateAttackInfo(benchmark::State& state) {
  Position position;
  for (auto _ : state) {
    updateAttackInfo(position.board);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(benchUpdateAttackInfo)->Name("updateAttackInfo");

}  // namespace
}  // namespace quill
