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
#include "uci/uci.h"

namespace quill {

namespace {

// Plies past the last book move within which the book is asked again.
constexpr int BookWindow = 6;

}  // namespace

void Uci::position(Tokenizer& words) {
  const UciStatus old = setStatus(Position);
  if (old == Position) log("uci: 2x position?\n");
  if (old == Searching || old == Pondering) {
    std::fprintf(stderr, "uci::position(): search still running? status=%i\n", old);
    pool_.stopAll();
  }
  pool_.waitIdle();
  setStatus(Position);  // the search that ended meanwhile has set its own
  // The GUI has moved on without "ponderhit" or "stop".
  if (old == Withheld) sendBestMove(answer_);

  if (setPosition(words)) playMoves(words);
  if (logStream() != nullptr) printBoard(board_, logStream());
}

// Sets the position that the arguments begin with, if any. True when a list of moves follows.
bool Uci::setPosition(Tokenizer& words) {
  std::string_view word = words.nextWord();
  if (equalsIgnoreCase(word, "startpos")) {
    setFen(board_, StartPosition);
    word = words.nextWord();
  } else if (equalsIgnoreCase(word, "fen")) {
    std::string fen;
    while (words.argsLeft()) {
      word = words.nextWord();
      if (equalsIgnoreCase(word, "moves")) break;
      fen.append(word).append(" ");
    }
    // When the text makes no sense the board keeps its position, for which the moves are not meant.
    if (!setFen(board_, fen.c_str())) return false;
  }
  return equalsIgnoreCase(word, "moves");
}

void Uci::playMoves(Tokenizer& words) {
  while (words.argsLeft()) {
    const EngineString text = words.nextToken();
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

void Uci::go(Tokenizer& words) {
  UciStatus old = stopRunningSearch();
  if (old == Withheld) {
    setStatus(Finished);
    sendBestMove(answer_);
    old = Finished;
  }
  if (probeBook()) {
    lastGoPly_ = 0;
    setStatus(Finished);
    return;
  }
  if (board_.gamePly() < lastGoPly_ - 1) forgetGame();
  lastGoPly_ = board_.gamePly();

  const SearchLimits limits = readLimits(words);
  setStatus(limits.ponder ? Pondering : Searching);
  if (old != Position) std::fprintf(stderr, "Expected current status==POSITION, got %i\n", old);

  TimeControl& control = pool_.state.timeControl;
  control.configure(limits, board_.stm);
  const bool isTimed = limits.moveTime >= 0 || limits.clock[board_.stm] >= 0;
  if (limits.depth == 0 && limits.nodes == 0 && !limits.hasNoTimeLimit() && !isTimed) {
    std::fprintf(stderr, "go(): no time/depth/node limit\n");
  }
  log("Nominal search time is %3.2f seconds, infinite=%i, nodes=%i\n",
      static_cast<double>(static_cast<float>(control.phaseTime(NormalPhase)) / 1000.0f),
      static_cast<int>(control.infinite()),
      static_cast<int>(std::min<std::uint64_t>(control.nodeLimit(), INT_MAX)));
  pool_.startSearch(this, uciMode_);
}

bool Uci::probeBook() {
  if (!options_.ownBook()) return false;
  const int ply = board_.gamePly();
  if (lastBookPly_ == 0 || ply < lastBookPly_) lastBookPly_ = ply;
  if (ply > lastBookPly_ + BookWindow) return false;
  const auto entry = book_.probe(Book::bookKey(board_));
  if (!entry) return false;
  lastBookPly_ = ply;
  const Move move = parseMove(board_, Book::moveText(*entry).data());
  if (move == NoMove) return false;
  answer_ = {move, NoMove};
  sendBestMove(answer_);
  return true;
}

SearchLimits Uci::readLimits(Tokenizer& words) const {
  SearchLimits limits;
  const struct {
    std::string_view name;
    int& value;
  } numbers[] = {
      {"wtime", limits.clock[White]},    {"btime", limits.clock[Black]},
      {"winc", limits.increment[White]}, {"binc", limits.increment[Black]},
      {"depth", limits.depth},           {"movetime", limits.moveTime},
      {"movestogo", limits.movesToGo},
  };
  std::int64_t nodes = 0;
  limits.reserve = reserve_;
  while (words.argsLeft()) {
    const std::string_view word = words.nextWord();
    for (const auto& number : numbers) {
      if (!equalsIgnoreCase(word, number.name)) continue;
      number.value = words.nextInt(number.value);
      if (&number.value == &limits.moveTime) limits.movesToGo = 1;
      break;
    }
    if (equalsIgnoreCase(word, "nodes")) {
      const std::string_view number = words.nextWord();
      if (!number.empty()) nodes = parseInt64(number);
    }
    if (equalsIgnoreCase(word, "infinite")) limits.infinite = true;
    if (equalsIgnoreCase(word, "ponder")) limits.ponder = true;
  }
  // A limit below zero limits nothing.
  limits.depth = std::max(limits.depth, 0);
  limits.nodes = static_cast<std::uint64_t>(std::max<std::int64_t>(nodes, 0));
  return limits;
}

}  // namespace quill
