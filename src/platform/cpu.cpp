#include "platform/cpu.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <thread>

#ifdef __linux__
#include <sched.h>
#endif
#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#include <x86intrin.h>
#define QUILL_HAS_CPUID 1
#elif defined(_M_X64)
#include <intrin.h>
#endif

namespace quill::platform {

namespace {

struct Features {
  std::uint32_t ecx;
  std::uint32_t edx;
};

// Leaf 1 of CPUID. A processor of another kind runs a build made for it, so all counts as present.
Features readFeatures() {
#if defined(QUILL_HAS_CPUID)
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return {0, 0};
  return {ecx, edx};
#elif defined(_M_X64)
  int registers[4];
  __cpuid(registers, 1);
  return {static_cast<std::uint32_t>(registers[2]), static_cast<std::uint32_t>(registers[3])};
#else
  return {~0u, ~0u};
#endif
}

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

bool hasSse2() { return (readFeatures().edx & (1u << 26)) != 0; }

bool hasPopcnt() { return (readFeatures().ecx & (1u << 23)) != 0; }

int processorCount() {
  int n = static_cast<int>(std::thread::hardware_concurrency());
  if (const int affine = affineProcessors(); affine > 0) n = affine;
  if (const int quota = quotaProcessors(); quota > 0) n = std::min(n, quota);
  return std::max(n, 1);
}

std::uint64_t readTimeStampCounter() {
#if defined(QUILL_HAS_CPUID) || defined(_M_X64)
  return __rdtsc();
#else
  return 0;
#endif
}

}  // namespace quill::platform
