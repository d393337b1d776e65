#include "shell/search_commands.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>

#include "board/fen.h"
#include "shell/engine.h"
#include "shell/text.h"

namespace quill {

namespace {

constexpr int NormalPhase = 3;

}  // namespace

void bookCommand(Engine& engine, const char* /*rest*/) {
  engine.bookSelector.printCandidates(getFen(engine.pool.board()).text());
}

void searchCommand(Engine& engine, const char* rest) {
  Tokenizer words;
  words.setArgs(rest);
  if (std::strcmp(words.nextToken().text(), "tt") != 0) engine.tt.clear();
  // What an earlier "go" asked for must not bind a search from the console.
  engine.timeControl.setInfinite(false);
  engine.timeControl.setDepthLimit(0);
  engine.timeControl.setNodeLimit(0);
  engine.uci.prepareConsoleSearch();
  engine.pool.startSearch();
  engine.pool.waitIdle();
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

}  // namespace quill
