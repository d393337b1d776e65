#include "search/worker.h"

#include "platform/clock.h"

namespace quill {

void SearchStats::reset() {
  for (Counter* counter :
       {&qnodes, &pruned, &nodes, &frontierNodes, &ttHits, &ttNew, &ttOverwrites}) {
    counter->reset();
  }
}

void SearchStats::add(const SearchStats& other) {
  qnodes.add(other.qnodes);
  pruned.add(other.pruned);
  nodes.add(other.nodes);
  frontierNodes.add(other.frontierNodes);
  ttHits.add(other.ttHits);
  ttNew.add(other.ttNew);
  ttOverwrites.add(other.ttOverwrites);
}

Worker::Worker(SearchState& sharedState, Tt& table, const EvalTables& evalTables, int place)
    : evaluator(board, evalTables), state(sharedState), tt(table), index(place) {}

void Worker::reset() {
  stats.reset();
  selDepth = 0;
  killers = {};
  splitsInUse = 0;
  splits = 0;
  joins = 0;
  splitAttempts = 0;
  emptyJoins = 0;
  drops = 0;
  poolLocks = 0;
  kills.store(0, std::memory_order_relaxed);
  timeSpent = {};
}

void stopWorker(Worker& worker) {
  // Sequentially consistent, the lasting reason first: a worker that lowers its stop flag and then
  // looks for reasons either sees this one or has its flag raised again behind it.
  worker.stopped.store(true);
  worker.stop.store(true);
}

void wakeWorker(Worker& worker) {
  worker.currentSplit.store(nullptr, std::memory_order_relaxed);
  worker.available.store(false, std::memory_order_relaxed);
  worker.isAssigned = false;
  worker.waitsAt = nullptr;
  worker.stopped.store(false, std::memory_order_relaxed);
  worker.stop.store(false, std::memory_order_relaxed);
  worker.idleEvent.reset();
  worker.wakeEvent.set();
}

void account(Worker& worker, Activity activity) {
  const std::uint32_t now = platform::tickCountMs();
  worker.timeSpent[activity] += now - worker.lastTick;
  worker.lastTick = now;
}

}  // namespace quill
