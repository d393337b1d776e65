#include "platform/cpu.h"

#include <thread>

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

}  // namespace

bool hasSse2() { return (readFeatures().edx & (1u << 26)) != 0; }

bool hasPopcnt() { return (readFeatures().ecx & (1u << 23)) != 0; }

int processorCount() {
  const unsigned n = std::thread::hardware_concurrency();
  return n == 0 ? 1 : static_cast<int>(n);
}

std::uint64_t readTimeStampCounter() {
#if defined(QUILL_HAS_CPUID) || defined(_M_X64)
  return __rdtsc();
#else
  return 0;
#endif
}

}  // namespace quill::platform
