#include "shell/startup.h"

#include <cstdio>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "platform/cpu.h"
#include "shell/engine.h"
#include "uci/names.h"

namespace quill {

namespace {

constexpr char DefaultSettingsFile[] = "quill.ini";
constexpr char DefaultBookFile[] = "quill.bbk";

void openBook(Engine& engine) {
  const char* name = engine.settings.getString("book.file", DefaultBookFile);
  if (*name == '\0') return;
  if (engine.book.open(name)) {
    std::printf("book=%s, %u moves\n", name, static_cast<unsigned>(engine.book.recordCount()));
    engine.bookSelector.applySettings(engine.settings);
  } else {
    std::printf("Warning: book not found: %s\n", name);
  }
}

}  // namespace

// Standard input keeps its buffer. Lines arrive as soon as they are typed all the same, and one
// system call for each byte would make long lines slow.
void prepareStreams() {
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  std::setvbuf(stderr, nullptr, _IONBF, 0);
}

void printBanner() { std::printf("%s-%s\n\n", EngineName, EngineVersion); }

int checkProcessor(bool hasSse2, bool hasPopcnt) {
  if (!hasSse2) {
    std::fprintf(stderr, "Cannot start: hardware does not support SSE2\n");
    return -1;
  }
  if (!hasPopcnt) {
    std::fprintf(stderr, "Cannot start: hardware does not support POPCNT\n");
    return -2;
  }
  return 0;
}

std::unique_ptr<Engine> createEngine() {
  initTables();
  initZobrist();
  return std::make_unique<Engine>(static_cast<std::uint32_t>(platform::readTimeStampCounter()));
}

void startEngine(Engine& engine, const char* settingsFile) {
  const char* name = settingsFile == nullptr ? DefaultSettingsFile : settingsFile;
  if (engine.settings.load(name)) std::printf("inifile=%s\n", name);
  std::printf("\n");

  setFen(engine.pool.board(), StartPosition);
  openBook(engine);

  std::printf("allocating hash...");
  const std::uint64_t bytes = engine.tt.resize(Tt::DefaultMegabytes * 1024);
  std::printf("allocated %uMb\n", static_cast<unsigned>(bytes >> 20));

  std::printf("starting threads...");
  engine.pool.setThreadCount(1);
  engine.pool.setThreadCount(platform::processorCount());
  engine.pool.waitIdle();
  std::printf("started %i threads\n", engine.pool.threadCount());
}

}  // namespace quill
