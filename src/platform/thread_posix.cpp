#include "platform/thread.h"

#include <pthread.h>

#include <chrono>
#include <cstring>
#include <thread>

#ifdef __linux__
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace quill::platform {

namespace {

// On Linux each thread has a nice value of its own. Elsewhere the priority stays as it is.
void lowerPriority() {
#ifdef __linux__
  setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 1);
#endif
}

}  // namespace

struct SystemEntry {
  static void* run(void* self) {
    const Thread::Start start = static_cast<Thread*>(self)->start_;
    lowerPriority();
    start.entry(start.argument);
    return nullptr;
  }
};

bool Thread::start(Entry entry, void* argument, std::size_t stackBytes) {
  start_ = {entry, argument};
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_t handle{};
  const bool created = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                       pthread_create(&handle, &attributes, SystemEntry::run, this) == 0;
  pthread_attr_destroy(&attributes);
  if (!created) return false;
  static_assert(sizeof(pthread_t) <= sizeof(handle_));
  std::memcpy(&handle_, &handle, sizeof handle);
  running_ = true;
  return true;
}

void Thread::join() {
  if (!running_) return;
  pthread_t handle{};
  std::memcpy(&handle, &handle_, sizeof handle);
  pthread_join(handle, nullptr);
  running_ = false;
}

void yieldThread() { std::this_thread::yield(); }

void sleepMicroseconds(unsigned microseconds) {
  std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
}

}  // namespace quill::platform
