#include "platform/cpu.h"

#ifdef __x86_64__
#include <cpuid.h>
#include <x86intrin.h>
#endif

#include <chrono>

namespace quill::platform {

namespace {

struct Features {
  std::uint32_t ecx;
  std::uint32_t edx;
};

// Leaf 1 of CPUID. A processor of another kind runs a build made for it, so all counts as present.
Features readFeatures() {
#ifdef __x86_64__
  unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
  if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0) return {0, 0};
  return {ecx, edx};
#else
  return {~0u, ~0u};
#endif
}

}  // namespace

bool hasSse2() { return (readFeatures().edx & (1u << 26)) != 0; }

bool hasPopcnt() { return (readFeatures().ecx & (1u << 23)) != 0; }

std::uint64_t readTimeStampCounter() {
#if defined(__x86_64__)
  return __rdtsc();
#elif defined(__aarch64__)
  std::uint64_t ticks;
  asm volatile("mrs %0, cntvct_el0" : "=r"(ticks));
  return ticks;
#else
  return static_cast<std::uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
#endif
}

}  // namespace quill::platform
