// Spin locks for the short critical sections of the parallel search.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/thread.h"

namespace quill::platform {

// Satisfies the standard's Lockable, so that std::lock_guard works on it.
class SpinLock {
 public:
  void lock() {
    // A holder may have been preempted when threads outnumber processors: spin a little, then
    // yield.
    for (int tries = 0; !try_lock(); ++tries) {
      if (tries >= SpinsBeforeYield) yieldThread();
    }
  }

  // Acquire pairs with the release of unlock: what the last holder wrote is seen.
  bool try_lock() {
    return word_.load(std::memory_order_relaxed) == 0 &&
           word_.exchange(1, std::memory_order_acquire) == 0;
  }

  void unlock() { word_.store(0, std::memory_order_release); }

  // For asserts only: the answer may be out of date at once.
  bool isHeld() const { return word_.load(std::memory_order_relaxed) != 0; }

 private:
  static constexpr int SpinsBeforeYield = 100;
  std::atomic<std::uint32_t> word_{0};
};

}  // namespace quill::platform
