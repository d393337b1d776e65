#include "shell/arguments.h"

#include <cstdio>
#include <cstring>

#include "board/attacks.h"
#include "board/zobrist.h"
#include "platform/cpu.h"
#include "shell/bench.h"
#include "shell/startup.h"
#include "uci/names.h"

namespace quill {

namespace {

constexpr char Usage[] =
    "usage: quill [SETTINGS]   start: for a chess GUI (UCI), or to be used by hand\n"
    "       quill bench        search fixed positions and tell the speed\n"
    "       quill --version    tell the version\n"
    "       quill --help       show this\n"
    "\n"
    "SETTINGS is the settings file, quill.ini in the current folder if it is not named.\n"
    "The command \"help\" lists what can be typed by hand.\n"
    "The manual is quill(6), or README.md and docs/uci.md in the source folder.\n";

int bench() {
  if (const int status = checkProcessor(platform::hasSse2(), platform::hasPopcnt()); status != 0) {
    return status;
  }
  initTables();
  initZobrist();
  return runBench() ? 0 : NoThread;
}

}  // namespace

std::optional<int> runArgument(const char* word) {
  if (std::strcmp(word, "bench") == 0) return bench();
  if (std::strcmp(word, "--version") == 0) {
    std::printf("%s %s\n", EngineName, EngineVersion);
    return 0;
  }
  if (std::strcmp(word, "--help") == 0) {
    std::fputs(Usage, stdout);
    return 0;
  }
  return std::nullopt;
}

}  // namespace quill
