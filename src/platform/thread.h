// Threads with a stack of a chosen size, and ways to give up the processor.
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

// Lets another thread run that is ready; returns at once when there is none.
void yieldThread();

// Gives up the processor for about the given time.
void sleepMicroseconds(unsigned microseconds);

}  // namespace quill::platform
