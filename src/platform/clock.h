// The millisecond tick counter.
#pragma once

#include <cstdint>

namespace quill::platform {

// Milliseconds since an arbitrary moment, modulo 2^32; never goes back. Take differences by
// unsigned subtraction, so that the wrap does not matter.
// Threads: any.
std::uint32_t tickCountMs();

}  // namespace quill::platform
