#include "search/node.h"

#include "search/search_state.h"

namespace quill {

bool pollLimits(Worker& worker) {
  // The flag is set here too: whoever ends the search may not have come to this worker yet.
  if (worker.state.checkLimits(worker)) worker.stop.store(true, std::memory_order_relaxed);
  return worker.isUnwinding();
}

}  // namespace quill
