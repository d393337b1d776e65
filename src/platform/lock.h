// Spin locks for the short critical sections of the parallel search.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/thread.h"

namespace quill::platform {

// Meets the standard's Lockable requirements, so that std::lock_guard works on it.
class SpinLock {
 public:
  void lock() {
    // The holder may have been preempted if threads outnumber processors: spin a little, then give
    // up the processor.
    for (int tries = 0; !try_lock(); ++tries) {
      if (tries < SpinsBeforeYield) {
        pauseProcessor();
      } else {
        yieldThread();
      }
    }
  }

  // The acquire pairs with the release in unlock: what the last holder wrote is visible.
  bool try_lock() {
    return word_.load(std::memory_order_relaxed) == 0 &&
           word_.exchange(1, std::memory_order_acquire) == 0;
  }

  void unlock() { word_.store(0, std::memory_order_release); }

  // For asserts, and to leave alone what others use: the answer may be out of date at once.
  bool isHeld() const { return word_.load(std::memory_order_relaxed) != 0; }

 private:
  static constexpr int SpinsBeforeYield = 100;
  std::atomic<std::uint32_t> word_{0};
};

}  // namespace quill::platform
