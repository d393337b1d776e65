// A hint that memory will be read soon.
#pragma once

namespace quill::platform {

inline void prefetch(const void* address) {
#if defined(__GNUC__)
  __builtin_prefetch(address);
#else
  (void)address;
#endif
}

}  // namespace quill::platform
