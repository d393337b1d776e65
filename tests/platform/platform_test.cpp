#include <gtest/gtest.h>
#ifdef _WIN32
#include <windows.h>
#endif

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <fstream>

#include "platform/cpu.h"
#include "platform/event.h"
#include "platform/files.h"
#include "platform/interrupt.h"
#include "platform/thread.h"
#include "support/capture.h"

namespace quill::test {
namespace {

constexpr std::size_t StackBytes = std::size_t{16} << 20;

// Touches the given number of stack frames of 4 KB each, one inside the other.
int sumOfFrames(int frames) {
  std::array<volatile char, 4096> frame;
  frame[0] = 1;
  return frame[0] + (frames > 1 ? sumOfFrames(frames - 1) : 0) - frame[0] + 1;
}

TEST(Platform, ThreadsHaveTheStackThatWasAskedFor) {
  constexpr int Frames = 3500;  // more than 14 MB
  struct Job {
    platform::Thread thread;
    int sum = 0;
  };
  std::array<Job, 16> jobs;
  for (Job& job : jobs) {
    const auto entry = [](void* sum) { *static_cast<int*>(sum) = sumOfFrames(Frames); };
    ASSERT_TRUE(job.thread.start(entry, &job.sum, StackBytes));
    EXPECT_TRUE(job.thread.isRunning());
  }
  for (Job& job : jobs) {
    job.thread.join();
    EXPECT_FALSE(job.thread.isRunning());
    EXPECT_EQ(job.sum, Frames);
    job.thread.join();  // does nothing
  }
}

TEST(Platform, SleepAndWaitTakeTheirTime) {
  const auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 20; ++i) platform::sleepMicroseconds(500);
  platform::Event event;
  EXPECT_FALSE(event.waitFor(10));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(20));
  event.set();
  EXPECT_TRUE(event.waitFor(0));
}

#ifdef _WIN32
// What happens at Ctrl-Break: a thread of the system's calls the handlers.
void interrupt() {
  void* const routine =
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernelbase.dll"), "CtrlRoutine"));
  ASSERT_NE(routine, nullptr);
  const HANDLE thread = CreateThread(nullptr, 0, reinterpret_cast<LPTHREAD_START_ROUTINE>(routine),
                                     reinterpret_cast<void*>(CTRL_BREAK_EVENT), 0, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
}
#else
void interrupt() { std::raise(SIGINT); }
#endif

TEST(Platform, EachWatchNotesTheFirstInterrupt) {
  std::signal(SIGINT, SIG_DFL);  // a shell's background job ignores it
  for (int i = 0; i < 2; ++i) {
    const platform::InterruptWatch watch;
    EXPECT_FALSE(watch.hasCome());
    interrupt();
    EXPECT_TRUE(watch.hasCome());
  }
}

TEST(Platform, ProcessorHasWhatTheProgramIsBuiltFor) {
  EXPECT_TRUE(platform::hasSse2() && platform::hasPopcnt());
  EXPECT_GE(platform::processorCount(), 1);
  const std::uint64_t before = platform::readTimeStampCounter();
  platform::sleepMicroseconds(1000);
  EXPECT_GT(platform::readTimeStampCounter(), before);
}

TEST(Platform, NewFilesReplaceNothing) {
  const TestFolder folder;
  const std::string old = folder.write("old", "kept");
  EXPECT_FALSE(platform::createNewFile(old.c_str()));
  EXPECT_EQ(errno, EEXIST);
  std::string text;
  EXPECT_TRUE(std::ifstream(old) >> text && text == "kept");

  const std::string fresh = folder.file("fresh");
  EXPECT_FALSE(platform::mayRead(fresh.c_str()));
  EXPECT_TRUE(platform::createNewFile(fresh.c_str()));
  EXPECT_TRUE(platform::mayRead(fresh.c_str()) && platform::mayWrite(fresh.c_str()));
  EXPECT_TRUE(platform::mayWrite(folder.file(".").c_str()));
  EXPECT_FALSE(platform::createNewFile(folder.file("none/fresh").c_str()));
  EXPECT_NE(errno, EEXIST);
  EXPECT_FALSE(platform::isTerminal(Capture().stream()));
}

}  // namespace
}  // namespace quill::test
