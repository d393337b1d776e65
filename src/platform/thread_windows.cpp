#include "platform/thread.h"

#include <windows.h>

namespace quill::platform {

namespace {

// Sleep() rounds up to the system's clock tick, 15 ms as a rule. A timer of high resolution, which
// Windows has since 2018, comes within half a millisecond.
// On failure: false, and no time has passed.
bool sleepByTimer(unsigned microseconds) {
  constexpr DWORD HighResolution = 0x2;  // CREATE_WAITABLE_TIMER_HIGH_RESOLUTION of newer headers
  const HANDLE timer = CreateWaitableTimerExW(nullptr, nullptr, HighResolution, TIMER_ALL_ACCESS);
  if (timer == nullptr) return false;
  LARGE_INTEGER due;
  due.QuadPart = -10LL * microseconds;  // from now, in units of 100 ns
  const bool slept = SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE) != 0 &&
                     WaitForSingleObject(timer, INFINITE) == WAIT_OBJECT_0;
  CloseHandle(timer);
  return slept;
}

}  // namespace

struct SystemEntry {
  static DWORD WINAPI run(void* self) {
    const Thread::Start start = static_cast<Thread*>(self)->start_;
    start.entry(start.argument);
    return 0;
  }
};

bool Thread::start(Entry entry, void* argument, std::size_t stackBytes) {
  start_ = {entry, argument};
  // The whole stack is reserved, and memory given to it as it grows.
  HANDLE handle = CreateThread(nullptr, stackBytes, SystemEntry::run, this,
                               CREATE_SUSPENDED | STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
  if (handle == nullptr) return false;
  SetThreadPriority(handle, THREAD_PRIORITY_BELOW_NORMAL);
  ResumeThread(handle);
  handle_ = reinterpret_cast<unsigned long long>(handle);
  running_ = true;
  return true;
}

void Thread::join() {
  if (!running_) return;
  HANDLE handle = reinterpret_cast<HANDLE>(handle_);
  WaitForSingleObject(handle, INFINITE);
  CloseHandle(handle);
  running_ = false;
}

void yieldThread() { SwitchToThread(); }

void sleepMicroseconds(unsigned microseconds) {
  if (!sleepByTimer(microseconds)) Sleep((microseconds + 999) / 1000);
}

}  // namespace quill::platform
