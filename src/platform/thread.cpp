#include "platform/thread.h"

#include <chrono>
#include <cstring>
#include <thread>

#ifdef _WIN32
#include <windows.h>
#else
#include <pthread.h>
#include <sched.h>
#endif
#ifdef __linux__
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#endif

namespace quill::platform {

#ifdef _WIN32

unsigned long __stdcall Thread::run(void* self) {
  const Start start = static_cast<Thread*>(self)->start_;
  start.entry(start.argument);
  return 0;
}

bool Thread::start(Entry entry, void* argument, std::size_t stackBytes) {
  start_ = {entry, argument};
  HANDLE handle = CreateThread(nullptr, stackBytes, run, this, CREATE_SUSPENDED, nullptr);
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

#else

namespace {

// On Linux each thread has a nice value of its own. Elsewhere the priority stays as it is.
void lowerPriority() {
#ifdef __linux__
  setpriority(PRIO_PROCESS, static_cast<id_t>(syscall(SYS_gettid)), 1);
#endif
}

}  // namespace

void* Thread::run(void* self) {
  const Start start = static_cast<Thread*>(self)->start_;
  lowerPriority();
  start.entry(start.argument);
  return nullptr;
}

bool Thread::start(Entry entry, void* argument, std::size_t stackBytes) {
  start_ = {entry, argument};
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return false;
  pthread_t handle{};
  const bool created = pthread_attr_setstacksize(&attributes, stackBytes) == 0 &&
                       pthread_create(&handle, &attributes, run, this) == 0;
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

#endif

void yieldThread() { std::this_thread::yield(); }

void sleepMicroseconds(unsigned microseconds) {
  std::this_thread::sleep_for(std::chrono::microseconds(microseconds));
}

}  // namespace quill::platform
