// A manual-reset event: it stays signalled, and lets every waiter pass, until it is reset.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quill::platform {

class Event {
 public:
  void set() {
    {
      const std::lock_guard guard(mutex_);
      signalled_ = true;
    }
    changed_.notify_all();
  }

  void reset() {
    const std::lock_guard guard(mutex_);
    signalled_ = false;
  }

  // Blocks until the event is signalled, without time-out.
  void wait() {
    std::unique_lock guard(mutex_);
    changed_.wait(guard, [this] { return signalled_; });
  }

  // Blocks until the event is signalled, but no longer than this. Whether it is signalled.
  bool waitFor(unsigned milliseconds) {
    std::unique_lock guard(mutex_);
    return changed_.wait_for(guard, std::chrono::milliseconds(milliseconds),
                             [this] { return signalled_; });
  }

  bool isSet() {
    const std::lock_guard guard(mutex_);
    return signalled_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool signalled_ = false;
};

}  // namespace quill::platform
