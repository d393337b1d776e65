// How long, and for how many nodes, one search may run: the one place that decides it.
//
// A search has seven budgets, one for each phase, computed once from the clock. Entering a phase
// copies its budget into the current limit, so that the polls of the search never compute anything.
//
// Threads: the input thread configures and starts it, the search's master thread moves it between
// phases, all search threads read the limits. Most shared fields are relaxed atomics: a stale read
// only delays a stop until the next poll. enterPhase and ponderhit, which are rare, exclude each
// other with a lock.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "board/codes.h"
#include "board/move.h"
#include "time/time_profile.h"

namespace quill {

// What a search may be limited by: the parameters of one "go". Times in ms, clocks by colour.
struct SearchLimits {
  std::array<int, 2> clock = {-1, -1};    // time left, -1 when not given
  std::array<int, 2> increment = {0, 0};  // for each move
  std::uint32_t reserve = 0;              // ms of the clock that are never used
  std::uint32_t overhead = 0;             // ms that pass outside the engine, off clock and moveTime
  int movesToGo = -1;                     // to the next time control, -1 when not given
  int moveTime = -1;                      // for this move, -1 when not given
  int depth = 0;                          // last iteration, 0 = none
  std::uint64_t nodes = 0;                // 0 = none
  bool infinite = false;
  bool ponder = false;   // no limit of time until ponderhit
  bool untimed = false;  // no limit of time, but the others end the search

  bool hasNoTimeLimit() const { return infinite || ponder; }
};

class TimeControl {
 public:
  static constexpr std::uint32_t NoLimit = 0xFFFFFFFF;
  using TickSource = std::uint32_t (*)();

  // The tick source counts milliseconds modulo 2^32; none means the platform's.
  explicit TimeControl(TickSource ticks = nullptr);

  // How clocks are shared out from the next configure on. The classic way at first.
  void setProfile(const TimeProfile& profile) { profile_ = &profile; }
  // Takes the limits of the next search, for the side stm, computes the budgets of all phases from
  // them and enters the normal phase. Without a clock or a move time the time budgets stay. Where
  // the profile plans with what is left alone, and that is too little for a budget, the search ends
  // with its first iteration.
  void configure(const SearchLimits& limits, Colour stm = White);
  // The same time for every phase, ms, until a search is configured otherwise.
  void setMoveTime(std::uint32_t ms);
  void setCanPonder(bool canPonder);

  // Begins a search: normal phase, the clock starts now.
  void start();

  // What the root tells of its progress; scores in centipawns, side to move's view.
  void setIterationDepth(int depth);
  void firstMoveSearched(int score);
  void firstMoveFailedLow();
  void newBestCandidate();
  void candidateResolved();
  void iterationDone(Move bestMove, int score);

  // Turns a pondering search into a timed one whose clock has run since its start. Input thread.
  void ponderhit();
  // Sequentially consistent, against the stop reason of the search: see Uci::ponderhit.
  bool infinite() const { return infinite_.load(); }

  // Milliseconds since the search started.
  std::uint32_t elapsed() const;
  bool isTimeUp() const { return elapsed() > limit(); }
  bool isNodeLimitReached(std::uint64_t nodes) const {
    const std::uint64_t nodeLimit = this->nodeLimit();
    return nodeLimit != 0 && nodes >= nodeLimit;
  }

  std::uint32_t limit() const { return limit_.load(std::memory_order_relaxed); }
  std::uint64_t nodeLimit() const { return nodeLimit_.load(std::memory_order_relaxed); }
  int depthLimit() const { return depthLimit_; }
  bool canPonder() const { return canPonder_; }
  TimePhase phase() const { return phase_.load(std::memory_order_relaxed); }
  std::uint32_t phaseTime(int phase) const {
    if (untimed_) return NoLimit;
    return phaseTime_[static_cast<unsigned>(phase)].load(std::memory_order_relaxed);
  }
  std::uint64_t phaseNodes(int phase) const {
    return phaseNodes_[static_cast<unsigned>(phase)].load(std::memory_order_relaxed);
  }

 private:
  void setNodeLimit(std::uint64_t nodes);
  void allocateTime(std::int64_t available, std::int64_t increment, int movesToGo);
  void allocateNodes(std::uint64_t nodes, int movesToGo);
  int horizon(int movesToGo, int unknown) const;
  void enterPhase(TimePhase phase);

  TickSource ticks_;
  const TimeProfile* profile_ = &ClassicTime;
  std::atomic<std::uint32_t> limit_{NoLimit};  // ms from startTick_
  std::atomic<std::uint32_t> startTick_{0};    // tick count at the search's start
  std::array<std::atomic<std::uint32_t>, PhaseCount> phaseTime_;   // ms
  std::array<std::atomic<std::uint64_t>, PhaseCount> phaseNodes_;  // 0 = none
  std::atomic<TimePhase> phase_{NormalPhase};
  std::atomic<bool> infinite_{false};  // no time limit: analysis or pondering
  bool canPonder_ = false;             // the GUI lets the engine ponder
  bool untimed_ = false;               // no time limit for this search alone
  int depthLimit_ = 0;                 // 0 = none
  std::atomic<std::uint64_t> nodeLimit_{0};
  int refScore_ = 0;        // centipawns; what a score must fall below to count as a drop
  int iterationDepth_ = 0;  // 0 before the first iteration
  Move refMove_ = NoMove;   // the move that refScore_ belongs to
  std::mutex phaseLock_;
};

}  // namespace quill
