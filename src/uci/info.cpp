#include "uci/info.h"

#include "board/notation.h"
#include "search/search_state.h"
#include "search/tt.h"
#include "shell/text.h"

namespace quill {

namespace {

constexpr std::uint32_t MinSpeedTime = 100;      // ms; below, nodes per second are noise
constexpr std::uint32_t ThrottleInterval = 100;  // ms
constexpr int YoungDepths = 8;                   // iterations for which a best move counts as news

void appendMove(std::string& text, Move move) {
  char buffer[MoveTextSize];
  uciMoveText(buffer, move);
  text += buffer;
}

void appendScore(std::string& text, int score) {
  if (score > ForcedMateScore) {
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

void appendStatsTail(std::string& text, const SearchSnapshot& snapshot) {
  appendFormat(text, " time %0.0f", static_cast<double>(snapshot.elapsed));
  appendFormat(text, " nodes %0.0f", static_cast<double>(snapshot.nodes));
  if (snapshot.elapsed >= MinSpeedTime) {
    appendFormat(text, " nps %u",
                 static_cast<std::uint32_t>(snapshot.nodes * 1000 / snapshot.elapsed));
  }
  appendFormat(text, " hashfull %u",
               static_cast<std::uint32_t>(static_cast<double>(snapshot.ttFilled) /
                                          static_cast<double>(snapshot.ttEntries) * 1000.0));
}

std::string currentMoveLine(int depth, int moveIndex, Move move, const SearchSnapshot& snapshot) {
  std::string text;
  appendFormat(text, "info depth %u currmovenumber %u currmove ", static_cast<unsigned>(depth),
               static_cast<unsigned>(moveIndex + 1));
  appendMove(text, move);
  appendStatsTail(text, snapshot);
  text += '\n';
  return text;
}

std::string pvBlock(const RootMoveList& rootMoves, const PvBlockOptions& options,
                    const SearchSnapshot& snapshot) {
  const bool multi = options.lines > 1;
  std::string text;
  for (int i = 0; i < options.lines; ++i) {
    const RootMove& r = rootMoves.at(i);
    if (multi && (r.bound == FailLow || r.depth < options.filterDepth)) continue;

    appendFormat(text, "info depth %u seldepth %u", static_cast<unsigned>(r.depth),
                 static_cast<unsigned>(snapshot.selDepth));
    appendScore(text, r.score);
    if (r.bound != Exact) text += r.bound == FailLow ? " upperbound" : " lowerbound";
    appendStatsTail(text, snapshot);
    const Move* pv = rootMoves.lineAt(i);
    if (options.sendPv && *pv != NoMove) {
      if (multi) appendFormat(text, " multipv %i", i + 1);
      text += " pv";
      for (; *pv != NoMove; ++pv) {
        text += ' ';
        appendMove(text, *pv);
      }
    }
    text += '\n';
  }
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
