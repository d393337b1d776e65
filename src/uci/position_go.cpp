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
#include "eval/evaluate.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "uci/uci.h"

namespace quill {

namespace {

// Plies past the last book move within which the book is asked again.
constexpr int BookWindow = 6;

// Whether the word has the form of a move in coordinates.
bool looksLikeMove(std::string_view word) {
  constexpr auto isRank = [](char c) { return c >= '1' && c <= '8'; };
  return (word.size() == 4 || word.size() == 5) && isRank(word[1]) && isRank(word[3]);
}

void addMove(RootRequest& request, Move move) {
  const auto end = request.moves.begin() + request.moveCount;
  if (move == NoMove || std::find(request.moves.begin(), end, move) != end) return;
  *end = move;
  ++request.moveCount;
}

}  // namespace

void Uci::position(Tokenizer& words) {
  const UciStatus old = setStatus(Position);
  if (old == Position) log("uci: 2x position?\n");
  if (isRunning(old)) {
    std::fprintf(stderr, "uci::position(): search still running? status=%i\n", old);
    pool_.stopAll();
  }
  pool_.waitIdle();
  setStatus(Position);  // the search that ended meanwhile has set its own
  // The GUI has moved on without "ponderhit" or "stop".
  if (isWithheld(old)) sendBestMove(answer_);

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
    if (!setFen(board_, fen.c_str())) {
      if (profile_->tellsRefusals) tell("refused position: " + fen);
      return false;
    }
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
      if (profile_->tellsRefusals) tell(std::string("refused move: ") + text.text());
      return;
    }
    rebaseStacks(board_);
    makeMove(board_, move);
    updateAttackInfo(board_);
  }
}

void Uci::go(Tokenizer& words) {
  UciStatus old = stopRunningSearch();
  if (isWithheld(old)) {
    setStatus(Finished);
    sendBestMove(answer_);
    old = Finished;
  }
  RootRequest request;
  SearchLimits limits = readLimits(words, request);
  if (mayPlayFromBook(limits, request) && probeBook()) {
    lastGoPly_ = 0;
    setStatus(Finished);
    return;
  }
  if (board_.gamePly() < lastGoPly_ - 1) forgetGame();
  lastGoPly_ = board_.gamePly();

  setStatus(limits.ponder                               ? Pondering
            : limits.infinite && profile_->waitsForStop ? Analysing
                                                        : Searching);
  if (old != Position) std::fprintf(stderr, "Expected current status==POSITION, got %i\n", old);

  limitStrength(limits, request);
  TimeControl& control = pool_.state.timeControl;
  control.configure(limits, board_.stm);
  const bool isTimed = limits.moveTime >= 0 || limits.clock[board_.stm] >= 0;
  if (limits.depth == 0 && limits.nodes == 0 && !limits.hasNoTimeLimit() && !limits.untimed &&
      !isTimed) {
    std::fprintf(stderr, "go(): no time/depth/node limit\n");
  }
  log("Nominal search time is %3.2f seconds, infinite=%i, nodes=%i\n",
      static_cast<double>(static_cast<float>(control.phaseTime(NormalPhase)) / 1000.0f),
      static_cast<int>(control.infinite()),
      static_cast<int>(std::min<std::uint64_t>(control.nodeLimit(), INT_MAX)));
  if (debug_) tellBudgets();
  pool_.startSearch(this, uciMode_, request);
}

void Uci::limitStrength(SearchLimits& limits, RootRequest& request) {
  // Analysis is always the best there is.
  const bool isAnalysis = limits.infinite || request.mateIn != 0 || options_.analyseMode();
  if (!options_.limitsStrength() || isAnalysis) return;
  const SearchState& state = pool_.state;
  wantedLines_ = std::max(1, state.multiPv);
  strength_ = Strength::of(options_.elo());
  if (limits.nodes == 0 || limits.nodes > strength_.nodes) limits.nodes = strength_.nodes;
  request.isAlone = true;
  request.lines = std::max(wantedLines_, strength_.lines);
  request.margin = strength_.width;
  // Lines that are shown are followed as far down as the GUI wants them.
  const int margin = state.multiPvMargin;
  if (wantedLines_ > 1 && (margin == 0 || margin > request.margin)) request.margin = margin;
}

void Uci::tellBudgets() {
  const TimeControl& control = pool_.state.timeControl;
  std::string text = "no limit of time";
  if (!control.infinite() && control.phaseTime(NormalPhase) != TimeControl::NoLimit) {
    text.clear();
    appendFormat(text, "time normally %u ms, at most %u ms", control.phaseTime(NormalPhase),
                 control.phaseTime(CrisisPhase));
  }
  tell(text);
}

bool Uci::mayPlayFromBook(const SearchLimits& limits, const RootRequest& request) const {
  if (!options_.ownBook()) return false;
  if (!profile_->sparesBook) return true;
  const bool isPlayers = limits.clock[board_.stm] >= 0 || limits.moveTime >= 0;
  return isPlayers && !limits.hasNoTimeLimit() && limits.depth == 0 && limits.nodes == 0 &&
         request.mateIn == 0 && request.moveCount == 0 && pool_.state.multiPv <= 1 &&
         !options_.analyseMode();
}

bool Uci::probeBook() {
  const int ply = board_.gamePly();
  if (lastBookPly_ == 0 || ply < lastBookPly_) lastBookPly_ = ply;
  if (ply > lastBookPly_ + BookWindow) return false;
  const auto entry = book_.probe(Book::bookKey(board_));
  if (!entry) return false;
  lastBookPly_ = ply;
  const Move move = parseMove(board_, Book::moveText(*entry).data());
  if (move == NoMove) return false;
  answer_ = {move, NoMove};
  if (profile_->endsWithLine) {
    const int score = evaluate(pool_.state.master().evaluator);
    send(unsearchedLine(score, move, profile_->promotions));
  }
  sendBestMove(answer_);
  return true;
}

SearchLimits Uci::readLimits(Tokenizer& words, RootRequest& request) const {
  SearchLimits limits;
  const struct {
    std::string_view name;
    int& value;
    bool isTime;
  } numbers[] = {
      {"wtime", limits.clock[White], true},     {"btime", limits.clock[Black], true},
      {"winc", limits.increment[White], false}, {"binc", limits.increment[Black], false},
      {"depth", limits.depth, false},           {"movetime", limits.moveTime, true},
      {"movestogo", limits.movesToGo, false},
  };
  std::int64_t nodes = 0;
  limits.reserve = reserve_;
  limits.overhead = options_.overhead();
  while (words.argsLeft()) {
    const std::string_view word = words.nextWord();
    for (const auto& number : numbers) {
      if (!equalsIgnoreCase(word, number.name)) continue;
      const bool isGiven = words.argsLeft();
      number.value = words.nextInt(number.value);
      if (&number.value == &limits.moveTime) limits.movesToGo = 1;
      if (isGiven && number.isTime && profile_->readsNegativeAsZero) {
        number.value = std::max(number.value, 0);
      }
      break;
    }
    if (equalsIgnoreCase(word, "nodes")) {
      const std::string_view number = words.nextWord();
      if (!number.empty()) nodes = parseInt64(number);
    }
    if (equalsIgnoreCase(word, "infinite")) limits.infinite = true;
    if (equalsIgnoreCase(word, "ponder")) limits.ponder = true;
    if (profile_->obeysNamedLimits) readRequest(word, words, request);
  }
  // A limit below zero limits nothing.
  limits.depth = std::max(limits.depth, 0);
  limits.nodes = static_cast<std::uint64_t>(std::max<std::int64_t>(nodes, 0));
  if (profile_->obeysNamedLimits) completeLimits(limits, request);
  return limits;
}

void Uci::readRequest(std::string_view word, Tokenizer& words, RootRequest& request) const {
  if (equalsIgnoreCase(word, "mate")) {
    request.mateIn = std::clamp(words.nextInt(0), 0, MaxSearchPly / 2);
  } else if (equalsIgnoreCase(word, "searchmoves")) {
    for (Tokenizer ahead = words; looksLikeMove(ahead.nextWord()); words = ahead) {
      addMove(request, parseMove(board_, words.nextToken().text(), nullptr));
    }
  }
}

// Without a clock what limits the search is what was named. It ends only when it is told to if
// nothing was, or only the moves to choose from.
void Uci::completeLimits(SearchLimits& limits, const RootRequest& request) const {
  int& own = limits.clock[board_.stm];
  if (own < 0) own = limits.clock[board_.stm ^ 1];
  if (own >= 0 || limits.moveTime >= 0) return;
  const bool isLimited = limits.depth != 0 || limits.nodes != 0 || request.mateIn != 0;
  // A ponder search stays without a limit of time behind "ponderhit".
  (isLimited || limits.ponder ? limits.untimed : limits.infinite) = true;
}

}  // namespace quill
