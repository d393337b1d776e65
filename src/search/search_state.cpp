#include "search/search_state.h"

#include <algorithm>

#include "time/time_control.h"

namespace quill {

SearchState::SearchState(Tt& ttRef, TimeControl& timeControlRef)
    : tt(ttRef), timeControl(timeControlRef) {
  rootMoves.clear();
}

void SearchState::reset(SearchListener* newListener, bool isQuiet, const RootRequest& newRequest) {
  listener = newListener;
  quiet = isQuiet;
  request = newRequest;
  activeMultiPv = std::max(1, request.lines != 0 ? request.lines : multiPv);
  activeMultiPvMargin = request.lines != 0 ? request.margin : multiPvMargin;
  rootMoves.clear();
  iterationDepth = 0;
  rootStop.store(false, std::memory_order_relaxed);
  stopReason.store(StopNone, std::memory_order_relaxed);
  idleCount.store(0, std::memory_order_relaxed);
  waitingOwners.store(0, std::memory_order_relaxed);
  // All at once: the sums over the workers are right from the start.
  for (const auto& worker : workers) worker->reset();
}

bool SearchState::checkLimits(const Worker& worker) {
  if (timeControl.isNodeLimitReached(worker.stats.searched()) || timeControl.isTimeUp()) {
    endSearch();
  }
  return rootStop.load();
}

void SearchState::endSearch() {
  rootStop.store(true);
  for (const auto& worker : workers) worker->stop.store(true);  // in this order: see stopWorker
}

std::uint64_t SearchState::searchedNodes() const {
  std::uint64_t sum = 0;
  for (const auto& worker : workers) sum += worker->stats.searched();
  return sum;
}

std::uint64_t SearchState::ttFilled() const {
  std::uint64_t sum = 0;
  for (const auto& worker : workers) {
    // The counters of a running search go on, and may be seen in another order than they were
    // written: an overwrite whose new entry is not counted yet counts as nothing.
    const std::uint64_t overwrites = worker->stats.ttOverwrites;
    const std::uint64_t entries = worker->stats.ttNew;
    sum += entries - std::min(entries, overwrites);
  }
  return sum;
}

}  // namespace quill
