// What the processor is and can do.
#pragma once

#include <cstdint>

namespace quill::platform {

// Whether the processor has the instructions that an x86-64 build is compiled for; a processor of
// another kind has all that its build needs.
bool hasSse2();
bool hasPopcnt();

// Processors that the program may use, at least 1: those of the machine without those that the
// program's affinity or, on Linux, its container's quota withholds.
int processorCount();

// The processor's time-stamp counter, in its own ticks; where there is none, a clock in its own.
std::uint64_t readTimeStampCounter();

}  // namespace quill::platform
