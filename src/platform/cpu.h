// What the processor is and can do.
#pragma once

#include <cstdint>

namespace quill::platform {

// Whether the processor has the instructions that the engine is compiled for.
bool hasSse2();
bool hasPopcnt();

// Processors that the program may use, at least 1: those of the machine, on Linux without those that
// its affinity or its container's quota withholds.
int processorCount();

// The processor's time-stamp counter, in its own ticks; 0 where there is none.
std::uint64_t readTimeStampCounter();

}  // namespace quill::platform
