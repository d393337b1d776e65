#include "search/report.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "board/notation.h"
#include "search/line_walk.h"
#include "search/params.h"
#include "search/search_state.h"
#include "shell/log.h"
#include "time/time_control.h"

namespace quill {

namespace {

constexpr char Units[] = " kmgt?";
constexpr int LineTextSize = 1024;  // a line's moves; enough for some hundred and fifty

// Writes the score in eight columns, as a count of moves to mate where it is one.
int formatScore(char* out, std::size_t size, int score) {
  if (score <= -ForcedMateScore)
    return std::snprintf(out, size, "     %+3i#", (-MateScore - score) / 2);
  if (score >= ForcedMateScore)
    return std::snprintf(out, size, "     %+3i#", (MateScore + 1 - score) / 2);
  return std::snprintf(out, size, "%8i ", score);
}

int formatTime(char* out, std::size_t size, std::uint32_t ms) {
  const std::uint32_t seconds = ms / 1000;
  if (seconds < 60) return std::snprintf(out, size, "%8.3f", ms / 1000.0);
  const std::uint32_t minutes = seconds / 60;
  return std::snprintf(out, size, "%2u:%02u:%02u", minutes / 60, minutes % 60, seconds % 60);
}

// The head of a console line in one text, so that the line goes out in one write.
struct LineHead {
  char text[160];

  LineHead(const SearchState& state, int score) {
    const Worker& master = state.master();
    const ShortCount nodes = shortenCount(master.stats.searched());
    char time[32];
    char value[32];
    formatTime(time, sizeof time, state.timeControl.elapsed());
    formatScore(value, sizeof value, score);
    const char* indent = state.iterationDepth <= 9 ? "  " : state.iterationDepth <= 99 ? " " : "";
    std::snprintf(text, sizeof text, "%s[%i/%i] %s%s%8i%c%s", indent, state.iterationDepth,
                  master.selDepth, master.selDepth <= 9 ? " " : "", time, nodes.value, nodes.unit,
                  value);
  }
};

bool isSilent(const SearchState& state) { return state.quiet || logStream() == nullptr; }

// The line's moves in algebraic notation, each with "+" when it gives check and a blank behind it.
void writeLine(Board& board, const Move* line, char* text, std::size_t size) {
  LineWalk walk(board);
  std::size_t used = 0;
  for (; *line != NoMove && used + MoveTextSize + 2 < size; ++line) {
    moveToSan(board, text + used, *line);
    used += std::strlen(text + used);
    walk.play(*line);
    if (board.isInCheck()) text[used++] = '+';
    text[used++] = ' ';
  }
  text[used] = '\0';
}

double percentOf(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 0.0 : static_cast<double>(part) / static_cast<double>(whole) * 100.0;
}

}  // namespace

ShortCount shortenCount(std::uint64_t value) {
  int divisions = 0;
  for (; value > 99999 && divisions < 5; ++divisions) value >>= 10;
  return {static_cast<int>(value), Units[divisions]};
}

void printSearchLine(const SearchState& state, int score, const char* text) {
  if (isSilent(state)) return;
  const bool hasText = text != nullptr;
  log("%s%s%s", LineHead(state, score).text, hasText ? " " : "", hasText ? text : "");
}

void printFailLine(const SearchState& state, int score, const char* text, Move move) {
  if (isSilent(state)) return;
  char moveText[MoveTextSize] = "";
  if (move != NoMove) uciMoveText(moveText, move);
  log("%s %s%s\n", LineHead(state, score).text, text, moveText);
}

void printPvLine(SearchState& state, int slot) {
  const RootMove& record = state.rootMoves.at(slot);
  const Move* line = state.rootMoves.lineAt(slot);
  if (state.listener != nullptr) state.listener->reportPv(record.depth, record.score, line[0]);
  if (isSilent(state)) return;
  char text[LineTextSize];
  char prefix[4] = "";
  if (state.activeMultiPv > 1) {
    prefix[0] = static_cast<char>('1' + slot);
    prefix[1] = ')';
    prefix[2] = ' ';
  }
  writeLine(state.master().board, line, text, sizeof text);
  log("%s %s%s\n", LineHead(state, record.score).text, prefix, text);
}

void printIteration(const SearchState& state, int score, const char* reason, float nodeRatio,
                    const char* suffix) {
  if (state.quiet) {
    log("/%2.1f %s\n", static_cast<double>(nodeRatio), suffix);
    return;
  }
  if (logStream() == nullptr) return;
  log("%s %s/%2.1f %s\n", LineHead(state, score).text, reason, static_cast<double>(nodeRatio),
      suffix);
}

void printStatistics(const SearchStats& stats, double seconds, std::uint64_t entries) {
  const std::uint64_t total = stats.searched();
  // A search of less than a millisecond has no speed worth telling.
  const double speed = seconds > 0 ? static_cast<double>(total) / seconds : 0.0;
  const ShortCount nodes = shortenCount(total);
  const ShortCount nps = shortenCount(static_cast<std::uint64_t>(speed));
  // A stop may come between the count of a frontier node and its quiescence search.
  const std::uint64_t inner =
      stats.qnodes - std::min<std::uint64_t>(stats.frontierNodes, stats.qnodes);
  log("nodes  : %i%c i=%5.2f%%, f=%5.2f%%, q=%5.2f%%, p=%5.2f%%, nps=%i%c\n", nodes.value,
      nodes.unit, percentOf(stats.nodes, total), percentOf(stats.frontierNodes, total),
      percentOf(inner, total), percentOf(stats.pruned, total), nps.value, nps.unit);
  log("tt     : upd=%5.2f%%, full=%5.2f%%\n", percentOf(stats.ttHits, stats.ttHits + stats.ttNew),
      percentOf(stats.ttNew - stats.ttOverwrites, entries));
}

void printThreadStatistics(const Worker& worker) {
  const auto& time = worker.timeSpent;
  const std::uint64_t searched = worker.stats.searched();
  const ShortCount nodes = shortenCount(searched);
  const ShortCount nps = shortenCount(time[WorkTime] == 0 ? 0 : searched * 1000 / time[WorkTime]);
  log("%s: splits=%i, joins=%i, kills=%i, admin=%i, masterwait=%i, slavewait=%i, workwait=%i, "
      "work=%i, "
      "nodes=%i%c, nps=%i%c\n",
      worker.index == 0 ? "master" : "slave ", static_cast<int>(worker.splits),
      static_cast<int>(worker.joins),
      static_cast<int>(worker.kills.load(std::memory_order_relaxed)),
      static_cast<int>(time[AdminTime]), static_cast<int>(time[MasterWaitTime]),
      static_cast<int>(time[SlaveWaitTime]), static_cast<int>(time[WorkWaitTime]),
      static_cast<int>(time[WorkTime]), nodes.value, nodes.unit, nps.value, nps.unit);
}

}  // namespace quill
