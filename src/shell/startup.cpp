#include "shell/startup.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/zobrist.h"
#include "platform/cpu.h"
#include "platform/install_places.h"
#include "platform/paths.h"
#include "platform/standard_streams.h"
#include "shell/engine.h"
#include "uci/names.h"

namespace quill {

namespace {

constexpr char DefaultSettingsFile[] = "quill.ini";
constexpr char DefaultBookFile[] = "quill.bbk";

bool loadSettings(Engine& engine, const std::filesystem::path& path) {
  const std::string name = platform::nameOf(path);
  if (!engine.settings.load(name.c_str())) return false;
  std::printf("inifile=%s\n", name.c_str());
  return true;
}

// The named file, or the default one. GUIs start the program from anywhere: a named file that is not
// in the current folder may lie beside the program or where the build installs its data, the default
// one where it installs the settings.
void findSettings(Engine& engine, const char* named) {
  const std::filesystem::path file =
      platform::pathOf(named == nullptr ? DefaultSettingsFile : named);
  if (loadSettings(engine, file)) return;
  const std::filesystem::path program = platform::programFolder();
  if (program.empty()) return;
  if (named != nullptr && loadSettings(engine, program / file)) return;
  const auto installed =
      program / (named == nullptr ? platform::SettingsPlace : platform::DataPlace);
  loadSettings(engine, (installed / file).lexically_normal());
}

// How to speak the protocol, and what the settings change of it.
void applyProfile(Engine& engine) {
  const Settings& settings = engine.settings;
  const char* name = settings.getString("uci.profile", "classic");
  const Profile* profile = findProfile(name);
  if (profile == nullptr) {
    std::printf("Warning: unknown uci.profile: %s\n", name);
    profile = &ClassicProfile;
  }
  engine.uci.setProfile(*profile);
  engine.uci.setErrorLog(settings.getString("uci.errorlog", profile->errorLog));
  if (!profile->offersMoreOptions) return;
  if (const char* text = settings.getString("time.overhead", nullptr)) {
    engine.uci.options().setOverhead(static_cast<std::uint32_t>(std::max(parseInt(text), 0)));
  }
}

void openBook(Engine& engine) {
  const char* name = engine.settings.getString("book.file", DefaultBookFile);
  if (*name == '\0') return;
  Options& options = engine.uci.options();
  if (options.openBookFile(name)) {
    std::printf("book=%s, %u moves\n", options.bookName().c_str(),
                static_cast<unsigned>(engine.book.recordCount()));
    engine.bookSelector.applySettings(engine.settings);
  } else {
    std::printf("Warning: book not found: %s\n", name);
  }
}

}  // namespace

// Standard input keeps its buffer. Lines arrive as soon as they are typed all the same, and one
// system call for each byte would make long lines slow.
void prepareStreams() {
  platform::guardStandardStreams();
  platform::useBinaryOutput();
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  std::setvbuf(stderr, nullptr, _IONBF, 0);
}

void endWithoutMemory() {
  std::fputs("FATAL: out of memory\n", stderr);
  std::abort();
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

int startEngine(Engine& engine, const char* settingsFile) {
  findSettings(engine, settingsFile);
  std::printf("\n");
  applyProfile(engine);

  setFen(engine.pool.board(), StartPosition);
  openBook(engine);

  std::printf("allocating hash...");
  const std::uint64_t bytes = engine.tt.resize(Tt::DefaultMegabytes * 1024);
  std::printf("allocated %uMb\n", static_cast<unsigned>(bytes >> 20));

  std::printf("starting threads...");
  engine.pool.setThreadCount(1);
  engine.pool.setThreadCount(platform::processorCount());
  engine.pool.waitIdle();
  if (engine.pool.threadCount() == 0) {
    std::printf("\n");
    std::fprintf(stderr,
                 "Cannot start: system grants no search thread (limit of memory or processes)\n");
    return NoThread;
  }
  std::printf("started %i threads\n", engine.pool.threadCount());
  return 0;
}

}  // namespace quill
