#include "search/search_state.h"

#include "support/search_kit.h"

namespace quill::test {
namespace {

// Whoever reads the counters of a running search may see an overwrite before its entry.
TEST(SearchState, AnEntryThatIsCountedLateNeverLeavesTheTableLessThanEmpty) {
  SearchKit kit(2);
  SearchStats& master = kit.pool.workers[0]->stats;
  SearchStats& slave = kit.pool.workers[1]->stats;
  master.ttNew.add(3);
  master.ttOverwrites.add(1);
  EXPECT_EQ(kit.state().ttFilled(), 2u);
  slave.ttNew.add(4);
  slave.ttOverwrites.add(5);
  EXPECT_EQ(kit.state().ttFilled(), 2u);
  ++slave.ttNew;
  ++slave.ttNew;
  EXPECT_EQ(kit.state().ttFilled(), 3u);
}

}  // namespace
}  // namespace quill::test
