// What the processor is and can do.
#pragma once

#include <cstdint>

namespace quill::platform {

// Whether the processor has the instructions that the engine is compiled for.
bool hasSse2();
bool hasPopcnt();

// Processors that the operating system offers, at least 1.
int processorCount();

// The processor's time-stamp counter, in its own ticks; 0 where there is none.
std::uint64_t readTimeStampCounter();

}  // namespace quill::platform
