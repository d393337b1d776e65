// Threads with a stack of a chosen size, ways to wait for others, and what they share unknowingly.
#pragma once

#include <cstddef>

namespace quill::platform {

// One operating-system thread, or none. Owned by the thread that starts it.
class Thread {
 public:
  using Entry = void (*)(void* argument);

  Thread() = default;
  Thread(const Thread&) = delete;
  Thread& operator=(const Thread&) = delete;
  // Requires: no thread runs (join first).
  ~Thread() = default;

  // Starts entry(argument) on a new thread with at least stackBytes of stack and, where the system
  // allows it, a priority just below normal.
  // On failure: false, and no thread runs.
  bool start(Entry entry, void* argument, std::size_t stackBytes);

  // Returns at once when no thread runs.
  // Blocks: until the thread ends.
  void join();

  bool isRunning() const { return running_; }

 private:
  struct Start {
    Entry entry;
    void* argument;
  };
  friend struct SystemEntry;  // the function that the system calls, in the system's own form

  Start start_{};
  unsigned long long handle_ = 0;
  bool running_ = false;
};

// Tells the processor that the thread only waits in a loop: it saves power, and leaves the core to
// the other thread that may share it.
inline void pauseProcessor() {
#if defined(__x86_64__)
  __builtin_ia32_pause();
#elif defined(__aarch64__)
  asm volatile("yield");
#endif
}

// Bytes that processors fetch and lose as one. What some write often and others read often lies
// that far apart.
inline constexpr std::size_t CacheLine = 64;

// Lets another thread run that is ready; returns at once when there is none.
void yieldThread();

// Gives up the processor for about the given time.
void sleepMicroseconds(unsigned microseconds);

}  // namespace quill::platform
