// Three numbers that change when the engine's behaviour does: for the legal move trees, the
// evaluation and the search of fixed positions. The first one that changes tells which layer did.
// They are equal for every compiler, build type and machine: no clock, one thread, cleared tables.
//
//   fingerprint               prints them
//   fingerprint --check FILE  compares them with a file of the same form; status 1 when they differ
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/perft.h"
#include "board/zobrist.h"
#include "eval/evaluate.h"
#include "shell/bench.h"
#include "shell/log.h"

namespace {

using namespace quill;

constexpr int PerftDepth = 3;
constexpr int EvalTreeDepth = 2;

// Calls visit(board) on every position at the end of the legal move sequences of the given length.
template <typename Visit>
void walkTree(Board& board, int depth, const Visit& visit) {
  if (depth == 0) {
    visit(board);
    return;
  }
  Move list[MaxMoves];
  Move* const end = generateLegal(board, list);
  const UndoInfo undo = board;
  for (Move* move = list; move != end; ++move) {
    makeMove(board, *move);
    updateAttackInfo(board);
    walkTree(board, depth - 1, visit);
    unmakeMove(board, *move, undo);
  }
}

bool setPosition(Board& board, const char* fen) {
  if (setFen(board, fen)) return true;
  std::fprintf(stderr, "fingerprint: bad position: %s\n", fen);
  return false;
}

std::uint64_t perftTotal() {
  std::uint64_t total = 0;
  const auto board = std::make_unique<Board>();
  for (const char* fen : benchPositions()) {
    if (!setPosition(*board, fen)) return 0;
    total += perft(*board, PerftDepth);
  }
  return total;
}

std::uint64_t evalChecksum(const EvalTables& tables) {
  std::uint64_t checksum = 0;
  const auto board = std::make_unique<Board>();
  const auto evaluator = std::make_unique<Evaluator>(*board, tables);
  for (const char* fen : benchPositions()) {
    if (!setPosition(*board, fen)) return 0;
    clearEvaluator(*evaluator);
    walkTree(*board, EvalTreeDepth, [&](const Board&) {
      const auto score =
          static_cast<std::uint64_t>(static_cast<std::int64_t>(evaluate(*evaluator)));
      checksum = checksum * 0x100000001B3 + score;
    });
  }
  return checksum;
}

std::string fingerprint() {
  logOff();
  initTables();
  initZobrist();
  const auto tables = std::make_unique<EvalTables>();
  char text[128];
  std::snprintf(text, sizeof text, "perft %" PRIu64 "\neval %016" PRIx64 "\nsearch %" PRIu64 "\n",
                perftTotal(), evalChecksum(*tables), searchBenchPositions());
  return text;
}

int check(const std::string& found, const char* path) {
  std::ifstream file(path);
  const std::string pinned{std::istreambuf_iterator<char>(file), {}};
  if (pinned == found) return 0;
  std::printf("the fingerprint has changed; pinned in %s:\n%s", path, pinned.c_str());
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 1 && (argc != 3 || std::strcmp(argv[1], "--check") != 0)) {
    std::fprintf(stderr, "usage: fingerprint [--check FILE]\n");
    return 2;
  }
  const std::string found = fingerprint();
  std::printf("%s", found.c_str());
  return argc == 3 ? check(found, argv[2]) : 0;
}
