// The millisecond tick counter.
#pragma once

#include <cstdint>

namespace quill::platform {

// Milliseconds since an arbitrary moment, modulo 2^32; never goes back. Differences are taken with
// unsigned subtraction, so that the wrap does not matter. Any thread.
std::uint32_t tickCountMs();

}  // namespace quill::platform
