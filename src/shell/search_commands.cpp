#include "shell/search_commands.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "board/notation.h"
#include "platform/interrupt.h"
#include "shell/bench.h"
#include "shell/engine.h"
#include "shell/text.h"

namespace quill {

namespace {

constexpr unsigned InterruptPollMs = 20;

// Waits for the end of the search, which an interrupt brings about at once.
void waitForSearch(ThreadPool& pool, const platform::InterruptWatch& interrupt) {
  platform::Event& idle = pool.state.master().idleEvent;
  while (!idle.waitFor(InterruptPollMs)) {
    if (interrupt.hasCome()) pool.stopAll();
  }
  pool.waitIdle();
}

void tellMove(ThreadPool& pool) {
  const Move move = pool.state.rootMoves.bestMove();
  if (move == NoMove) return;
  char text[MoveTextSize];
  moveToSan(pool.board(), text, move);
  std::printf("move: %s\n", text);
}

}  // namespace

void bookCommand(Engine& engine, const char* /*rest*/) {
  engine.bookSelector.printCandidates(Book::bookKey(engine.pool.board()));
}

void searchCommand(Engine& engine, const char* rest) {
  Tokenizer words;
  words.setArgs(rest);
  if (std::strcmp(words.nextToken().text(), "tt") != 0) engine.tt.clear();
  // The limits of an earlier "go" must not apply to a search from the console.
  engine.timeControl.configure({});
  // The protocol hears of searches from its "uci" on.
  Uci& uci = engine.uci;
  if (uci.uciMode()) {
    engine.pool.startSearch(&uci, true);
    engine.pool.waitIdle();
    return;
  }
  const platform::InterruptWatch interrupt;
  engine.pool.startSearch(nullptr, false);
  waitForSearch(engine.pool, interrupt);
  if (uci.profile().tellsMove) tellMove(engine.pool);
}

void moveTimeCommand(Engine& engine, const char* rest) {
  Tokenizer words;
  words.setArgs(rest);
  if (words.argsLeft()) {
    if (engine.uci.isSearching()) {
      std::fprintf(stderr, "mt: a search is running\n");
      return;
    }
    const int seconds = std::clamp(words.nextInt(0), 0, INT_MAX / 1000);
    engine.timeControl.setMoveTime(static_cast<std::uint32_t>(seconds) * 1000);
  }
  std::printf("maxtime=%3.2fs\n", engine.timeControl.phaseTime(NormalPhase) / 1000.0);
}

void benchCommand(Engine& /*engine*/, const char* /*rest*/) { runBench(); }

}  // namespace quill
