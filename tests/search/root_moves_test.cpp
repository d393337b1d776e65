#include "search/root_moves.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quill {
namespace {

struct Record {
  int score;
  int depth;
  int nodes = 0;
};

// A list whose move number i is i + 1, in this order.
RootMoveList listOf(const std::vector<Record>& records) {
  RootMoveList list{};
  list.count = static_cast<std::uint32_t>(records.size());
  for (unsigned i = 0; i < records.size(); ++i) {
    list.order[i] = i;
    list.records[i] = {i + 1, static_cast<std::int16_t>(records[i].score),
                       static_cast<std::uint8_t>(records[i].depth), Exact,
                       static_cast<std::uint64_t>(records[i].nodes)};
  }
  return list;
}

std::vector<Move> movesOf(const RootMoveList& list) {
  std::vector<Move> moves;
  for (unsigned i = 0; i < list.count; ++i) moves.push_back(list.at(static_cast<int>(i)).move);
  return moves;
}

TEST(RootMoves, PlaceIsFoundAmongTheFirstLines) {
  const struct {
    std::vector<Record> records;
    int multiPv, slot, newSlot;
    std::vector<Move> order;
  } cases[] = {
      // A later move always takes the first place of one line; the first move stays.
      {{{50, 2}, {40, 1}, {30, 2}}, 1, 2, 0, {3, 1, 2}},
      {{{50, 2}, {90, 1}}, 1, 0, 0, {1, 2}},
      // A later move enters at its score, and displaces the worst of the lines even with less.
      {{{50, 2}, {30, 2}, {10, 2}, {5, 1}, {40, 2}}, 3, 4, 1, {1, 5, 2, 3, 4}},
      {{{50, 2}, {30, 2}, {10, 2}, {5, 2}}, 3, 3, 2, {1, 2, 4, 3}},
      // On equal scores the earlier one stays ahead.
      {{{50, 2}, {30, 2}, {10, 1}, {30, 2}}, 3, 3, 2, {1, 2, 4, 3}},
      // A line that fell moves down behind what was searched as deep, not behind older scores.
      {{{10, 2}, {30, 2}, {20, 2}, {90, 1}}, 3, 0, 2, {2, 3, 1, 4}},
      {{{10, 2}, {30, 1}, {20, 2}}, 3, 0, 0, {1, 2, 3}},
      // More lines than moves.
      {{{10, 2}, {30, 2}}, 9, 1, 0, {2, 1}},
  };
  for (const auto& c : cases) {
    RootMoveList list = listOf(c.records);
    SCOPED_TRACE("case " + std::to_string(&c - cases));
    EXPECT_EQ(placeRootMove(list, c.multiPv, c.slot), c.newSlot);
    EXPECT_EQ(movesOf(list), c.order);
  }
}

TEST(RootMoves, TailIsSortedByNodesAndTheLinesStay) {
  const std::pair<int, std::vector<Move>> cases[] = {
      {1, {1, 5, 3, 2, 4}}, {3, {1, 2, 3, 5, 4}}, {200, {1, 2, 3, 4, 5}}};
  for (const auto& [lines, expected] : cases) {
    RootMoveList list = listOf({{0, 1, 1}, {0, 1, 5}, {0, 1, 7}, {0, 1, 5}, {0, 1, 9}});
    sortRootTail(list, lines);
    EXPECT_EQ(movesOf(list), expected) << lines;
  }
}

TEST(RootMoves, OneComesToTheFrontAndTheOthersKeepTheirOrder) {
  RootMoveList list = listOf({{50, 1}, {40, 1}, {30, 1}, {20, 1}});
  list.bringToFront(2);
  EXPECT_EQ(movesOf(list), (std::vector<Move>{3, 1, 2, 4}));
  list.bringToFront(0);
  EXPECT_EQ(list.bestMove(), 3u);
}

TEST(RootMoves, LowestLineIsAmongTheLinesAlone) {
  const RootMoveList list = listOf({{50, 1}, {70, 1}, {-300, 1}});
  const std::pair<int, int> cases[] = {{0, 50}, {2, 50}, {3, -300}, {256, -300}};
  for (const auto& [lines, lowest] : cases) EXPECT_EQ(lowestPvScore(list, lines), lowest) << lines;
}

}  // namespace
}  // namespace quill
