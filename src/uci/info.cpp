#include "uci/info.h"

#include <algorithm>

#include "search/search_state.h"
#include "search/tt.h"
#include "shell/text.h"

namespace quill {

namespace {

constexpr std::uint32_t MinSpeedTime = 100;      // ms; below, nodes per second are noise
constexpr std::uint32_t ThrottleInterval = 100;  // ms
constexpr int YoungDepths = 8;                   // iterations for which a best move counts as news

void appendMove(std::string& text, Move move, PromotionCase promotions) {
  char buffer[MoveTextSize];
  uciMoveText(buffer, move, promotions);
  text += buffer;
}

void appendScore(std::string& text, int score, bool isFinal) {
  if (isFinal && score == -MateScore) {
    text += " score mate 0";
  } else if (score > ForcedMateScore) {
    appendFormat(text, " score mate %i", (MateScore + 1 - score) / 2);
  } else if (score < -ForcedMateScore) {
    appendFormat(text, " score mate -%i", (score + MateScore) / 2);
  } else {
    appendFormat(text, " score cp %i", score);
  }
}

}  // namespace

SearchSnapshot SearchSnapshot::of(const SearchState& state, std::uint32_t elapsed) {
  return {elapsed, state.searchedNodes(), state.ttFilled(), state.tt.entries(),
          state.master().selDepth};
}

void appendStatsTail(std::string& text, const SearchSnapshot& snapshot, bool isFinal) {
  appendFormat(text, " time %0.0f", static_cast<double>(snapshot.elapsed));
  appendFormat(text, " nodes %0.0f", static_cast<double>(snapshot.nodes));
  if (isFinal || snapshot.elapsed >= MinSpeedTime) {
    const std::uint32_t time = std::max(snapshot.elapsed, 1u);
    appendFormat(text, " nps %u", static_cast<std::uint32_t>(snapshot.nodes * 1000 / time));
  }
  appendFormat(text, " hashfull %u",
               static_cast<std::uint32_t>(static_cast<double>(snapshot.ttFilled) /
                                          static_cast<double>(snapshot.ttEntries) * 1000.0));
}

std::string currentMoveLine(int depth, int moveIndex, Move move, const SearchSnapshot& snapshot,
                            PromotionCase promotions) {
  std::string text;
  appendFormat(text, "info depth %u currmovenumber %u currmove ", static_cast<unsigned>(depth),
               static_cast<unsigned>(moveIndex + 1));
  appendMove(text, move, promotions);
  appendStatsTail(text, snapshot);
  text += '\n';
  return text;
}

std::string pvBlock(const RootMoveList& rootMoves, const PvBlockOptions& options,
                    const SearchSnapshot& snapshot) {
  const bool multi = options.lines > 1;
  std::string text;
  for (int line = 0; line < options.lines; ++line) {
    const int i = options.isFinal ? options.lines - 1 - line : line;
    const RootMove& r = rootMoves.at(i);
    const bool isWanted = options.isFinal && i == 0;
    if (multi && !isWanted && (r.bound == FailLow || r.depth < options.filterDepth)) continue;

    appendFormat(text, "info depth %u seldepth %u", static_cast<unsigned>(r.depth),
                 static_cast<unsigned>(snapshot.selDepth));
    appendScore(text, r.score, options.isFinal);
    if (r.bound != Exact) text += r.bound == FailLow ? " upperbound" : " lowerbound";
    appendStatsTail(text, snapshot, options.isFinal);
    const Move* pv = rootMoves.lineAt(i);
    if (options.sendPv && *pv != NoMove) {
      if (multi) appendFormat(text, " multipv %i", i + 1);
      text += " pv";
      for (; *pv != NoMove; ++pv) {
        text += ' ';
        appendMove(text, *pv, options.promotions);
      }
    }
    text += '\n';
  }
  return text;
}

std::string unsearchedLine(int score, Move move, PromotionCase promotions) {
  std::string text;
  appendFormat(text, "info depth 1 seldepth 1 score cp %i time 0 nodes 0 nps 0 hashfull 0 pv ",
               score);
  appendMove(text, move, promotions);
  text += '\n';
  return text;
}

bool InfoThrottle::admitsCurrentMove(int moveIndex, std::uint32_t elapsed) {
  if ((moveIndex != 0 || pvRepeat_) && elapsed < nextInfoTime_) return false;
  nextInfoTime_ = elapsed + ThrottleInterval;
  return true;
}

bool InfoThrottle::admitsPv(int depth, int score, Move move, std::uint32_t elapsed) {
  pvRepeat_ = score == lastScore_ && move == lastMove_ && depth - lastDepth_ > YoungDepths;
  return !pvRepeat_ || elapsed >= nextInfoTime_;
}

void InfoThrottle::pvShown(int depth, int score, Move move) {
  if (score == lastScore_ && move == lastMove_) return;
  lastDepth_ = depth;
  lastScore_ = score;
  lastMove_ = move;
}

}  // namespace quill
