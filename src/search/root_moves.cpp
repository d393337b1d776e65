#include "search/root_moves.h"

#include <algorithm>

#include "board/movegen.h"
#include "eval/see.h"
#include "search/params.h"
#include "search/worker.h"

namespace quill {

void RootMoveList::clear() {
  order[0] = 0;
  records[0] = {};
  lines[0][0] = NoMove;
  lines[0][1] = NoMove;
  count = 0;
}

void RootMoveList::bringToFront(int slot) {
  std::rotate(order.begin(), order.begin() + slot, order.begin() + slot + 1);
}

Move RootMoveList::ponderMove() const {
  const Move* line = lineAt(0);
  return line[0] == NoMove ? NoMove : line[1];
}

int lineCount(const RootMoveList& list, int multiPv) {
  return std::max(1, std::min(multiPv, static_cast<int>(list.count)));
}

int initRootMoves(RootMoveList& list, Worker& worker, std::span<const Move> only) {
  Board& board = worker.board;
  Move moves[MaxMoves];
  Move* end = generateLegal(board, moves);
  if (!only.empty()) {
    end = std::remove_if(moves, end, [only](Move move) {
      return std::find(only.begin(), only.end(), move) == only.end();
    });
  }
  const int count = static_cast<int>(end - moves);
  list.clear();
  list.count = static_cast<std::uint32_t>(count);
  if (count == 0) {
    list.records[0].score = static_cast<std::int16_t>(board.isInCheck() ? -MateScore : DrawScore);
    return 0;
  }
  // What hangs and moves away, and what wins by exchange, comes first. The key lives in the nodes
  // field until the moves are sorted; the offset keeps it positive.
  constexpr int KeyScale = 32;
  constexpr int KeyOffset = 65536;
  for (int i = 0; i < count; ++i) {
    const Move move = moves[i];
    const int key = KeyScale * (seeSquare(board, fromOf(move)) + 2 * see(board, move));
    list.order[i] = static_cast<std::uint32_t>(i);
    list.records[i] = {move, static_cast<std::int16_t>(key), 0, NotSearched,
                       static_cast<std::uint64_t>(key + KeyOffset)};
    list.lines[i][0] = NoMove;
    list.lines[i][1] = NoMove;
  }
  sortRootTail(list, 0);
  for (int i = 0; i < count; ++i) list.records[i].nodes = 0;
  return count;
}

int placeRootMove(RootMoveList& list, int multiPv, int slot) {
  const int k = lineCount(list, multiPv);
  const std::uint32_t moved = list.order[slot];
  const RootMove& record = list.records[moved];
  int j = slot;
  // A move from outside the first k always enters them.
  for (; j > 0; --j) {
    if (j < k && record.score <= list.at(j - 1).score) break;
    list.order[j] = list.order[j - 1];
  }
  while (j < k - 1) {
    const RootMove& next = list.at(j + 1);
    if (next.score <= record.score || next.depth < record.depth) break;
    list.order[j] = list.order[j + 1];
    ++j;
  }
  list.order[j] = moved;
  return j;
}

// An insertion sort: it needs no memory, and the moves are nearly in order most of the time.
void sortRootTail(RootMoveList& list, int k) {
  for (int i = k + 1; i < static_cast<int>(list.count); ++i) {
    const std::uint32_t moved = list.order[i];
    const std::uint64_t nodes = list.records[moved].nodes;
    int to = i;
    for (; to > k && list.at(to - 1).nodes < nodes; --to) list.order[to] = list.order[to - 1];
    list.order[to] = moved;
  }
}

int bestScore(const RootMoveList& list) { return list.at(0).score; }

int lowestPvScore(const RootMoveList& list, int multiPv) {
  int lowest = list.at(0).score;
  for (int i = 1; i < lineCount(list, multiPv); ++i) {
    lowest = std::min<int>(lowest, list.at(i).score);
  }
  return lowest;
}

}  // namespace quill
