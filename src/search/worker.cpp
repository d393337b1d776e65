#include "search/worker.h"

#include "platform/clock.h"
#include "smp/thread_pool.h"

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

Worker::Worker(ThreadPool& owner, int place)
    : evaluator(board, owner.evalTables),
      pool(owner),
      tt(owner.tt),
      timeControl(owner.timeControl),
      index(place) {}

void account(Worker& worker, Activity activity) {
  const std::uint32_t now = platform::tickCountMs();
  worker.timeSpent[activity] += now - worker.lastTick;
  worker.lastTick = now;
}

}  // namespace quill
