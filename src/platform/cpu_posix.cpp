#include "platform/cpu.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <thread>

#ifdef __linux__
#include <sched.h>
#endif

namespace quill::platform {

namespace {

#ifdef __linux__

// Processors that the process may run on, 0 when the system does not say.
int affineProcessors() {
  cpu_set_t set;
  return sched_getaffinity(0, sizeof set, &set) == 0 ? CPU_COUNT(&set) : 0;
}

// Processors' worth of time that the process's control group may use, rounded up; 0 without a quota.
// A container sees its own group's quota here: "max 100000", or "150000 100000" for one and a half.
int quotaProcessors() {
  std::FILE* file = std::fopen("/sys/fs/cgroup/cpu.max", "r");
  if (file == nullptr) return 0;
  double quota = 0;
  double period = 0;
  const int numbers = std::fscanf(file, "%lf %lf", &quota, &period);
  std::fclose(file);
  return numbers == 2 && period > 0 ? static_cast<int>(std::ceil(quota / period)) : 0;
}

#else

int affineProcessors() { return 0; }
int quotaProcessors() { return 0; }

#endif

}  // namespace

int processorCount() {
  int n = static_cast<int>(std::thread::hardware_concurrency());
  if (const int affine = affineProcessors(); affine > 0) n = affine;
  if (const int quota = quotaProcessors(); quota > 0) n = std::min(n, quota);
  return std::max(n, 1);
}

}  // namespace quill::platform
