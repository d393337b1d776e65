#include "platform/cpu.h"

#include <windows.h>

#include <algorithm>
#include <bit>

namespace quill::platform {

// The mask has the processors of one group, which are up to 64. It is 0 for a process that has been
// spread over several groups.
int processorCount() {
  DWORD_PTR mine = 0;
  DWORD_PTR all = 0;
  if (GetProcessAffinityMask(GetCurrentProcess(), &mine, &all) != 0 && mine != 0) {
    return std::popcount(mine);
  }
  return std::max(static_cast<int>(GetActiveProcessorCount(ALL_PROCESSOR_GROUPS)), 1);
}

}  // namespace quill::platform
