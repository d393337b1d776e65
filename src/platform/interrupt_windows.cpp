#include "platform/interrupt.h"

#include <windows.h>

#include <atomic>

namespace quill::platform {

namespace {

std::atomic<bool> interrupted{false};

// Runs on a thread that the system starts for it. What it does not take, the system's own handler
// does, which ends the program.
BOOL WINAPI noteInterrupt(DWORD event) {
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) return FALSE;
  return interrupted.exchange(true, std::memory_order_relaxed) ? FALSE : TRUE;
}

}  // namespace

// Where interrupts are ignored, the system calls no handler at all.
InterruptWatch::InterruptWatch() {
  interrupted.store(false, std::memory_order_relaxed);
  SetConsoleCtrlHandler(noteInterrupt, TRUE);
}

InterruptWatch::~InterruptWatch() { SetConsoleCtrlHandler(noteInterrupt, FALSE); }

bool InterruptWatch::hasCome() const { return interrupted.load(std::memory_order_relaxed); }

}  // namespace quill::platform
