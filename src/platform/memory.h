// Advice to the operating system on how memory is used.
#pragma once

#include <cstddef>

namespace quill::platform {

// Asks for large pages behind the range, which may begin and end anywhere; only whole pages inside
// it count. To be called before the memory is first written to. It is a hint: where the system has
// no large pages, nothing happens. A table that is read at random places misses the processor's
// address cache on almost every access when its pages are small.
void preferLargePages(void* start, std::size_t bytes);

}  // namespace quill::platform
