// A whole search engine without a console: table, clock and thread pool, silent, with a clock that
// only the test moves. For the test programs that link the search.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/notation.h"
#include "eval/weights.h"
#include "search/quiescence.h"
#include "search/search.h"
#include "search/tt.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill::test {

#ifdef NDEBUG
inline constexpr bool IsCheckedBuild = false;
#else
// Asserts, often sanitizers too: a test does less of the same there.
inline constexpr bool IsCheckedBuild = true;
#endif

constexpr int effort(int full, int checked) { return IsCheckedBuild ? checked : full; }

// A clock that stands still until a test moves it on.
inline std::atomic<std::uint32_t> crankedTicks{0};
inline std::uint32_t crankedClock() { return crankedTicks.load(); }

class SearchKit {
 public:
  // Without threads only direct calls on the master worker can be made.
  explicit SearchKit(int threads = 0, TimeControl::TickSource ticks = crankedClock)
      : timeControl(ticks), pool(tt, timeControl, evalTables) {
    setLogStream(nullptr);
    if (threads > 0) pool.setThreadCount(threads);
  }
  ~SearchKit() {
    pool.stopAll();
    setLogStream(stdout);
  }
  SearchKit(const SearchKit&) = delete;
  SearchKit& operator=(const SearchKit&) = delete;

  Worker& worker() { return pool.state.master(); }
  SearchState& state() { return pool.state; }
  Board& board() { return pool.board(); }
  RootMoveList& rootMoves() { return pool.state.rootMoves; }

  void setPosition(const std::string& fen) {
    ASSERT_TRUE(setFen(board(), fen.c_str(), nullptr)) << fen;
  }

  // Forgets everything that one search could leave to the next.
  void clear() {
    tt.clear();
    pool.clearEvaluators();
  }

  // One node of the main search, or of the quiescence search, on the calling thread.
  int scoreAt(int ply, int depth, int alpha = -30000, int beta = 30000, unsigned flags = PvNode) {
    return search(worker(), ply, depth, alpha, beta, flags);
  }
  int quietScoreAt(int ply, int checkDepth, int alpha = -30000, int beta = 30000,
                   unsigned flags = PvNode | InQuiescence) {
    return qsearch(worker(), ply, checkDepth, alpha, beta, flags);
  }

  // Starts a search within the limits on the pool's threads. Requires: no search runs.
  void start() {
    timeControl.configure(limits, board().stm);
    pool.startSearch(listener, quiet);
  }
  // A whole search, to the depth (0: as the other limits say); the score of its best move.
  int think(int depth) {
    limits.depth = depth;
    start();
    pool.waitIdle();
    return bestScore(rootMoves());
  }

  std::string bestMoveText() { return uciText(rootMoves().bestMove()); }
  static std::string uciText(Move move) {
    char text[MoveTextSize];
    uciMoveText(text, move);
    return text;
  }

  SearchLimits limits;
  SearchListener* listener = nullptr;
  bool quiet = true;

  EvalTables evalTables;
  Tt tt;
  TimeControl timeControl;
  ThreadPool pool;
};

// Writes down what a search tells.
class RecordingListener : public SearchListener {
 public:
  struct Event {
    enum Kind { Current, Pv, Finished } kind;
    int depth;
    int value;  // move index, or score
    Move move;
  };

  void reportCurrentMove(int depth, int moveIndex, Move move) override {
    events.push_back({Event::Current, depth, moveIndex, move});
  }
  void reportPv(int depth, int score, Move move) override {
    events.push_back({Event::Pv, depth, score, move});
  }
  void searchFinished(int depth, int score, Move move) override {
    events.push_back({Event::Finished, depth, score, move});
  }

  int countOf(Event::Kind kind) const {
    int n = 0;
    for (const Event& event : events) n += event.kind == kind ? 1 : 0;
    return n;
  }

  std::vector<Event> events;
};

}  // namespace quill::test
