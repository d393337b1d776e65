#include "platform/memory.h"

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace quill::platform {

void preferLargePages([[maybe_unused]] void* start, [[maybe_unused]] std::size_t bytes) {
#ifdef __linux__
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  const std::uintptr_t first = (address + page - 1) / page * page;
  const std::uintptr_t end = (address + bytes) / page * page;
  if (first < end) madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

}  // namespace quill::platform
