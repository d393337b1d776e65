#include "time/time_control.h"

#include <algorithm>
#include <limits>

#include "platform/clock.h"

namespace quill {

namespace {

constexpr std::uint32_t DefaultMoveTime = 5000;  // ms
constexpr int MinDropDepth = 2;                  // scores of shallower iterations are no reference
constexpr std::int64_t MinNodes = 256;           // one poll of the search
constexpr std::int64_t MaxTime = std::numeric_limits<std::int32_t>::max();

// The whole part of factor * unit, no more than max.
std::int64_t scaled(double factor, std::int64_t unit, std::int64_t max) {
  const double product = factor * static_cast<double>(unit);
  return product >= static_cast<double>(max) ? max : static_cast<std::int64_t>(product);
}

// Milliseconds of the given ones that are left beside the overhead.
std::int64_t leftBeside(std::uint32_t overhead, int ms) {
  if (overhead == 0) return ms;
  return std::max<std::int64_t>(std::int64_t{ms} - overhead, 0);
}

}  // namespace

TimeControl::TimeControl(TickSource ticks)
    : ticks_(ticks == nullptr ? platform::tickCountMs : ticks) {
  setMoveTime(DefaultMoveTime);
  setNodeLimit(0);
  start();
}

void TimeControl::configure(const SearchLimits& limits, Colour stm) {
  infinite_.store(limits.hasNoTimeLimit());
  setNodeLimit(limits.nodes);
  depthLimit_ = limits.depth;
  untimed_ = limits.untimed;
  const int clock = limits.clock[static_cast<unsigned>(stm)];
  if (limits.untimed) {
    // The budgets stay for a later search that is not told its time.
  } else if (limits.moveTime >= 0) {
    setMoveTime(static_cast<std::uint32_t>(leftBeside(limits.overhead, limits.moveTime)));
  } else if (clock >= 0) {
    const std::int64_t left = leftBeside(limits.overhead, clock);
    const std::int64_t ahead = std::int64_t{profile_->overheadsAhead} * limits.overhead;
    allocateTime(left - std::min(ahead, left / 2) - limits.reserve,
                 std::max(limits.increment[static_cast<unsigned>(stm)], 0), limits.movesToGo);
  } else if (limits.movesToGo >= 0 && limits.nodes != 0) {
    allocateNodes(limits.nodes, limits.movesToGo);
  }
  // The clock ticks too coarsely to end a search after less than a millisecond.
  if (profile_->minTime == 0 && !limits.infinite && phaseTime(NormalPhase) == 0) depthLimit_ = 1;
  enterPhase(NormalPhase);
}

void TimeControl::start() {
  enterPhase(NormalPhase);
  startTick_.store(ticks_(), std::memory_order_relaxed);
  refScore_ = 0;
  iterationDepth_ = 0;
  refMove_ = NoMove;
}

void TimeControl::enterPhase(TimePhase phase) {
  const std::lock_guard guard(phaseLock_);
  phase_.store(phase, std::memory_order_relaxed);
  if (infinite()) {
    limit_.store(NoLimit, std::memory_order_relaxed);
  } else {
    limit_.store(phaseTime(phase), std::memory_order_relaxed);
    nodeLimit_.store(phaseNodes(phase), std::memory_order_relaxed);
  }
}

void TimeControl::setMoveTime(std::uint32_t ms) {
  untimed_ = false;
  for (auto& time : phaseTime_) time.store(ms, std::memory_order_relaxed);
}

void TimeControl::setNodeLimit(std::uint64_t nodes) {
  nodeLimit_.store(nodes, std::memory_order_relaxed);
  for (auto& budget : phaseNodes_) budget.store(nodes, std::memory_order_relaxed);
}

void TimeControl::setCanPonder(bool canPonder) { canPonder_ = canPonder; }

int TimeControl::horizon(int movesToGo, int unknown) const {
  if (movesToGo < 1) return unknown;
  return std::min(movesToGo, profile_->maxMovesToGo);
}

// Every move to go gets half an even share for certain; what is then left over is the most that one
// phase may take, and is spread thinly over all moves as well.
void TimeControl::allocateTime(std::int64_t available, std::int64_t increment, int movesToGo) {
  const std::int64_t minTime = profile_->minTime;
  const std::int64_t mtg =
      horizon(movesToGo, increment == 0 ? profile_->suddenDeath : profile_->withIncrement);
  const std::int64_t avail =
      std::max(available - scaled(profile_->reserveShare, available, MaxTime), minTime);
  const std::int64_t half = (avail / (mtg + 2)) >> 1;
  const std::int64_t base = std::max(half, minTime);
  const std::int64_t maxT = std::min(std::max(avail - (mtg + 1) * base, base), MaxTime);
  std::int64_t unit = base + (maxT - base) / (mtg + 2);
  if (canPonder_) unit = scaled(profile_->ponderFactor, unit, MaxTime);
  unit += scaled(profile_->incrementShare, increment, MaxTime);

  for (unsigned i = 0; i < PhaseCount; ++i) {
    phaseTime_[i].store(static_cast<std::uint32_t>(scaled(profile_->phaseFactor[i], unit, maxT)),
                        std::memory_order_relaxed);
  }
}

void TimeControl::allocateNodes(std::uint64_t nodes, int movesToGo) {
  constexpr std::int64_t MaxInt64 = std::numeric_limits<std::int64_t>::max();
  const auto n = static_cast<std::int64_t>(std::min<std::uint64_t>(nodes, MaxInt64));
  const std::int64_t mtg = horizon(movesToGo, profile_->maxMovesToGo);
  const std::int64_t half = (n / (mtg + 2)) >> 1;
  const std::int64_t maxN = std::max(n - (mtg + 1) * half, MinNodes);
  std::int64_t unit = maxN / (mtg + 2) + half;
  if (canPonder_) unit = scaled(profile_->ponderFactor, unit, MaxInt64);

  for (unsigned i = 0; i < PhaseCount; ++i) {
    const std::int64_t budget = std::max(scaled(profile_->phaseFactor[i], unit, maxN), MinNodes);
    phaseNodes_[i].store(static_cast<std::uint64_t>(budget), std::memory_order_relaxed);
  }
}

void TimeControl::setIterationDepth(int depth) { iterationDepth_ = depth; }

void TimeControl::firstMoveSearched(int score) {
  const TimePhase next =
      iterationDepth_ > MinDropDepth && score < refScore_ ? CrisisPhase : NormalPhase;
  if (next != phase()) enterPhase(next);
}

void TimeControl::firstMoveFailedLow() {
  if (iterationDepth_ != 0 && phase() <= VerifyPhase) enterPhase(CrisisPhase);
}

void TimeControl::newBestCandidate() {
  if (iterationDepth_ != 0 && phase() <= NormalPhase) enterPhase(VerifyPhase);
}

void TimeControl::candidateResolved() {
  if (iterationDepth_ != 0 && phase() == VerifyPhase) enterPhase(NormalPhase);
}

void TimeControl::iterationDone(Move bestMove, int score) {
  enterPhase(iterationDepth_ > MinDropDepth && score < refScore_ ? CrisisPhase : NormalPhase);
  // While the best move stays, the reference keeps its lowest score.
  if (bestMove != refMove_ || score < refScore_) refScore_ = score;
  refMove_ = bestMove;
}

// The lock keeps a phase that the search enters meanwhile from putting "no limit" back.
void TimeControl::ponderhit() {
  const std::lock_guard guard(phaseLock_);
  infinite_.store(false);
  limit_.store(phaseTime(phase()), std::memory_order_relaxed);
}

std::uint32_t TimeControl::elapsed() const {
  return ticks_() - startTick_.load(std::memory_order_relaxed);
}

}  // namespace quill
