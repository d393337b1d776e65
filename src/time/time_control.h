// How long, and for how many nodes, one search may run: the one place that decides it.
//
// A search has seven budgets, one for each phase, computed once from the clock. Entering a phase
// copies its budget into the current limit, so that the polls of the search never compute anything.
//
// Threads: the input thread configures and starts it, the search's master thread moves it between
// phases, all search threads read the limits. The shared fields are relaxed atomics: a stale read
// only shifts a stop by one poll. enterPhase and ponderhit exclude each other with a lock; both are
// rare.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <mutex>

#include "board/move.h"

namespace quill {

class TimeControl {
 public:
  static constexpr std::uint32_t NoLimit = 0xFFFFFFFF;
  static constexpr int PhaseCount = 7;
  using TickSource = std::uint32_t (*)();

  // The tick source counts milliseconds modulo 2^32; none means the platform's.
  explicit TimeControl(TickSource ticks = nullptr);

  // Begins a search: normal phase, the clock starts now.
  void start();

  // Configuration, before a search. Times in ms.
  void setInfinite(bool infinite);
  void setMoveTime(std::uint32_t ms);
  void setNodeLimit(std::uint64_t nodes);  // 0 = none
  void setDepthLimit(int depth);           // 0 = none
  void setReserve(std::uint32_t ms);
  void setMovesToGo(int moves);  // -1 when not given
  void setClock(std::uint32_t remaining, std::uint32_t increment);
  void setCanPonder(bool canPonder);
  // Compute the budgets of all phases from the clock, or from the node limit, and enter the normal
  // phase.
  void allocateTime();
  void allocateNodes();

  // What the root tells of its progress; scores in centipawns, side to move's view.
  void setIterationDepth(int depth);
  void firstMoveSearched(int score);
  void firstMoveFailedLow();
  void newBestCandidate();
  void candidateResolved();
  void iterationDone(Move bestMove, int score);

  // Turns a pondering search into a timed one whose clock has run since its start. Input thread.
  void ponderhit();

  // Milliseconds since the search started.
  std::uint32_t elapsed() const;
  bool isTimeUp() const { return elapsed() > limit(); }
  bool isNodeLimitReached(std::uint64_t nodes) const {
    const std::uint64_t nodeLimit = this->nodeLimit();
    return nodeLimit != 0 && nodes >= nodeLimit;
  }

  std::uint32_t limit() const { return limit_.load(std::memory_order_relaxed); }
  std::uint64_t nodeLimit() const { return nodeLimit_.load(std::memory_order_relaxed); }
  bool infinite() const { return infinite_.load(std::memory_order_relaxed); }
  int depthLimit() const { return depthLimit_; }
  bool canPonder() const { return canPonder_; }
  int phase() const { return phase_.load(std::memory_order_relaxed); }
  std::uint32_t phaseTime(int phase) const {
    return phaseTime_[static_cast<unsigned>(phase)].load(std::memory_order_relaxed);
  }
  std::uint64_t phaseNodes(int phase) const {
    return phaseNodes_[static_cast<unsigned>(phase)].load(std::memory_order_relaxed);
  }

 private:
  void enterPhase(int phase);

  TickSource ticks_;
  std::atomic<std::uint32_t> limit_{NoLimit};  // ms from startTick_
  std::atomic<std::uint32_t> startTick_{0};    // tick count at the search's start
  std::uint32_t increment_ = 0;                // ms
  std::uint32_t remaining_ = 0;                // ms on the clock of the side to move
  std::uint32_t reserve_ = 0;                  // ms held back from remaining_
  int movesToGo_ = -1;                         // -1 when not given
  std::array<std::atomic<std::uint32_t>, PhaseCount> phaseTime_;   // ms
  std::array<std::atomic<std::uint64_t>, PhaseCount> phaseNodes_;  // 0 = none
  std::atomic<int> phase_{0};
  std::atomic<bool> infinite_{false};  // no time limit: analysis or pondering
  bool canPonder_ = false;             // the GUI lets the engine ponder
  int depthLimit_ = 0;                 // 0 = none
  std::atomic<std::uint64_t> nodeLimit_{0};
  int refScore_ = 0;        // centipawns; what a score must fall below to count as a drop
  int iterationDepth_ = 0;  // 0 before the first iteration
  Move refMove_ = NoMove;   // the move that refScore_ belongs to
  std::mutex phaseLock_;
};

}  // namespace quill
