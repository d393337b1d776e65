#include "platform/interrupt.h"

#include <signal.h>

#include <atomic>

namespace quill::platform {

namespace {

// The handler may run on any thread, between any two instructions: it only sets this.
std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

struct sigaction earlier;  // what is to happen after the watch

void noteInterrupt(int) { interrupted.store(true, std::memory_order_relaxed); }

}  // namespace

InterruptWatch::InterruptWatch() {
  interrupted.store(false, std::memory_order_relaxed);
  struct sigaction action {};
  action.sa_handler = noteInterrupt;
  // The second interrupt finds the default action. Output in progress is not cut short.
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, nullptr, &earlier);
  if (earlier.sa_handler != SIG_IGN) sigaction(SIGINT, &action, nullptr);
}

InterruptWatch::~InterruptWatch() { sigaction(SIGINT, &earlier, nullptr); }

bool InterruptWatch::hasCome() const { return interrupted.load(std::memory_order_relaxed); }

}  // namespace quill::platform
