#include "platform/interrupt.h"

#include <atomic>

#ifdef _WIN32
#include <windows.h>
#else
#include <signal.h>
#endif

namespace quill::platform {

namespace {

// The handler may run on any thread, between any two instructions: it only sets this.
std::atomic<bool> interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free);

#ifdef _WIN32

int __stdcall noteInterrupt(unsigned long event) {
  return event == CTRL_C_EVENT && !interrupted.exchange(true) ? TRUE : FALSE;
}

#else

struct sigaction earlier;  // what is to happen after the watch

void noteInterrupt(int) { interrupted.store(true, std::memory_order_relaxed); }

#endif

}  // namespace

bool InterruptWatch::hasCome() const { return interrupted.load(std::memory_order_relaxed); }

#ifdef _WIN32

InterruptWatch::InterruptWatch() {
  interrupted.store(false);
  SetConsoleCtrlHandler(noteInterrupt, TRUE);
}

InterruptWatch::~InterruptWatch() { SetConsoleCtrlHandler(noteInterrupt, FALSE); }

#else

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

#endif

}  // namespace quill::platform
