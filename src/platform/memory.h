// What the operating system should know about how memory is used.
#pragma once

#include <cstddef>

namespace quill::platform {

// Asks for large pages behind the whole pages of the range, which may begin and end anywhere. To be
// called before the memory is first written to. It is a hint: where the system has no large pages
// nothing happens. A table that is read all over misses the processor's address cache with almost
// every access when its pages are small.
void preferLargePages(void* start, std::size_t bytes);

}  // namespace quill::platform
