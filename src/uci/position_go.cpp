// The two commands that do the work of a game: "position" and "go".
#include <algorithm>
#include <climits>
#include <string>

#include "board/board.h"
#include "board/display.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/notation.h"
#include "book/book_selector.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"
#include "uci/uci.h"

namespace quill {

namespace {

// Plies past the last book move within which the book is asked again.
constexpr int BookWindow = 6;
constexpr int NormalPhase = 3;

std::uint32_t atLeastZero(int ms) { return static_cast<std::uint32_t>(std::max(ms, 0)); }

}  // namespace

void Uci::position() {
  const UciStatus old = setStatus(Position);
  if (old == Position) log("uci: 2x position?\n");
  if (old == Searching || old == Pondering) {
    std::fprintf(stderr, "uci::position(): search still running? status=%i\n", old);
    pool_.stopAll();
  }
  pool_.waitIdle();
  setStatus(Position);  // the search that ended meanwhile has set its own
  releaseWithheldAnswer();

  if (setPosition()) playMoves();
  if (logStream() != nullptr) printBoard(board_, logStream());
}

// Sets the position that the arguments begin with, if any. True when the moves of a "moves" follow,
// to be played on the board.
bool Uci::setPosition() {
  EngineString word = arguments_.nextToken();
  if (equalsIgnoreCase(word.text(), "startpos")) {
    setFen(board_, StartPosition);
    word = arguments_.nextToken();
  } else if (equalsIgnoreCase(word.text(), "fen")) {
    std::string fen;
    while (arguments_.argsLeft()) {
      word = arguments_.nextToken();
      if (equalsIgnoreCase(word.text(), "moves")) break;
      fen.append(word.text()).append(" ");
    }
    // The board still holds the old position when the text makes no sense; the moves are not for
    // it.
    if (!setFen(board_, fen.c_str())) return false;
  }
  return equalsIgnoreCase(word.text(), "moves");
}

void Uci::playMoves() {
  while (arguments_.argsLeft()) {
    const EngineString text = arguments_.nextToken();
    if (*text.text() == '.') {
      log("SKIP continuation move: %s\n", text.text());
      continue;
    }
    const Move move = parseMove(board_, text.text());
    if (move == NoMove) {
      std::fprintf(stderr, "WARNING invalid move from GUI: %s\n", text.text());
      return;
    }
    rebaseStacks(board_);
    makeMove(board_, move);
    updateAttackInfo(board_);
  }
}

void Uci::go() {
  const UciStatus old = stopRunningSearch();
  releaseWithheldAnswer();
  if (probeBook()) {
    lastGoPly_ = 0;
    setStatus(Finished);
    return;
  }
  if (board_.gamePly() < lastGoPly_ - 1) ucinewgame();
  lastGoPly_ = board_.gamePly();

  const GoLimits limits = readGoLimits();
  setStatus(limits.ponder ? Pondering : Searching);
  if (old != Position) std::fprintf(stderr, "Expected current status==POSITION, got %i\n", old);

  configureTime(limits);
  throttle_.reset();
  pool_.listener = this;
  pool_.quiet = uciMode_;
  pool_.startSearch();
}

bool Uci::probeBook() {
  if (!ownBook_) return false;
  const int ply = board_.gamePly();
  if (lastBookPly_ == 0 || ply < lastBookPly_) lastBookPly_ = ply;
  if (ply > lastBookPly_ + BookWindow) return false;
  const auto entry = book_.probe(getFen(board_).text());
  if (!entry) return false;
  lastBookPly_ = ply;
  const Move move = parseMove(board_, Book::moveText(*entry).data());
  if (move == NoMove) return false;
  answer_ = {move, NoMove};
  sendBestMove(answer_);
  return true;
}

Uci::GoLimits Uci::readGoLimits() {
  struct Keyword {
    const char* name;
    int GoLimits::*value;
  };
  static constexpr Keyword Keywords[] = {
      {"wtime", &GoLimits::wtime},         {"btime", &GoLimits::btime},
      {"winc", &GoLimits::winc},           {"binc", &GoLimits::binc},
      {"depth", &GoLimits::depth},         {"movetime", &GoLimits::movetime},
      {"movestogo", &GoLimits::movestogo},
  };

  GoLimits limits;
  while (arguments_.argsLeft()) {
    const EngineString word = arguments_.nextToken();
    for (const Keyword& keyword : Keywords) {
      if (!equalsIgnoreCase(word.text(), keyword.name)) continue;
      limits.*keyword.value = arguments_.nextInt(limits.*keyword.value);
      if (keyword.value == &GoLimits::movetime) limits.movestogo = 1;
      break;
    }
    if (equalsIgnoreCase(word.text(), "nodes")) {
      const EngineString number = arguments_.nextToken();
      if (!number.isEmpty()) limits.nodes = parseInt64(number.text());
    }
    if (equalsIgnoreCase(word.text(), "infinite")) limits.infinite = true;
    if (equalsIgnoreCase(word.text(), "ponder")) limits.ponder = true;
  }
  // A limit below zero limits nothing.
  limits.depth = std::max(limits.depth, 0);
  limits.nodes = std::max<std::int64_t>(limits.nodes, 0);
  return limits;
}

void Uci::configureTime(const GoLimits& limits) {
  TimeControl& control = pool_.timeControl;
  const bool isWhite = board_.stm == White;
  const int clock = isWhite ? limits.wtime : limits.btime;
  const bool isUnlimited = limits.infinite || limits.ponder;

  control.start();
  control.setInfinite(isUnlimited);
  control.setNodeLimit(static_cast<std::uint64_t>(limits.nodes));
  control.setDepthLimit(limits.depth);
  control.setReserve(0);
  if (limits.movetime >= 0) {
    control.setMoveTime(static_cast<std::uint32_t>(limits.movetime));
  } else {
    control.setMovesToGo(limits.movestogo);
    if (clock >= 0) {
      control.setReserve(reserve_);
      control.setClock(static_cast<std::uint32_t>(clock),
                       atLeastZero(isWhite ? limits.winc : limits.binc));
      control.allocateTime();
    } else if (limits.movestogo >= 0 && limits.nodes != 0) {
      control.allocateNodes();
    }
  }

  if (limits.depth == 0 && limits.nodes == 0 && !isUnlimited && limits.movetime < 0 && clock < 0) {
    std::fprintf(stderr, "go(): no time/depth/node limit\n");
  }
  log("Nominal search time is %3.2f seconds, infinite=%i, nodes=%i\n",
      static_cast<double>(static_cast<float>(control.phaseTime(NormalPhase)) / 1000.0f),
      static_cast<int>(control.infinite()),
      static_cast<int>(std::min<std::uint64_t>(control.nodeLimit(), INT_MAX)));
}

}  // namespace quill
