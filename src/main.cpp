// The program: prepare the process, bring the engine up, hand over to the console loop.
#include <cstdio>
#include <new>

#include "platform/cpu.h"
#include "shell/arguments.h"
#include "shell/console.h"
#include "shell/engine.h"
#include "shell/output.h"
#include "shell/startup.h"

int main(int argc, char** argv) {
  using namespace quill;
  prepareStreams();
  std::set_new_handler(endWithoutMemory);
  if (argc == 2) {
    if (const auto status = runArgument(argv[1])) {
      requireOutput(stdout);
      return *status;
    }
  }
  printBanner();
  if (const int status = checkProcessor(platform::hasSse2(), platform::hasPopcnt()); status != 0) {
    return status;
  }

  const auto engine = createEngine();
  if (const int status = startEngine(*engine, argc > 1 ? argv[1] : nullptr); status != 0) {
    return status;
  }
  std::printf("\ninitialized\n");
  return runConsole(*engine, stdin);
}
