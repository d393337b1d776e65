#include "uci/uci.h"

#include <cstdlib>

#include "board/notation.h"
#include "eval/evaluate.h"
#include "platform/standard_streams.h"
#include "search/tt.h"
#include "shell/log.h"
#include "shell/output.h"
#include "smp/thread_pool.h"
#include "uci/names.h"

namespace quill {

namespace {

// Standard error goes to the file, behind what earlier games left there, or nowhere. Where the file
// can't be opened it stays as it is.
void redirectErrors(const std::string& name) {
  if (name == "stderr") return;
  const char* const path = name == "none" ? platform::NullDevice : name.c_str();
  std::FILE* probe = std::fopen(path, "a");
  if (probe == nullptr) return;
  std::fclose(probe);
  platform::keepStandardErrorOpen();
  if (std::freopen(path, "a", stderr) != nullptr) std::setvbuf(stderr, nullptr, _IONBF, 0);
}

}  // namespace

Uci::Uci(ThreadPool& pool, EvalTables& evalTables, Book& bookFile, BookSelector& book,
         std::FILE* out)
    : pool_(pool),
      board_(pool.board()),
      book_(book),
      out_(out),
      options_(pool, evalTables, bookFile) {
  setProfile(ClassicProfile);
}

void Uci::setProfile(const Profile& profile) {
  profile_ = &profile;
  reserve_ = profile.reserve;
  pool_.state.timeControl.setProfile(*profile.time);
  options_.setProfile(profile);
}

bool Uci::dispatch(const char* command, const char* rest) {
  struct Handler {
    const char* name;
    void (Uci::*run)(Tokenizer& words);
  };
  static constexpr Handler Handlers[] = {
      {"uci", &Uci::uci},
      {"position", &Uci::position},
      {"go", &Uci::go},
      {"isready", &Uci::isready},
      {"setoption", &Uci::setoption},
      {"ucinewgame", &Uci::ucinewgame},
      {"ponderhit", &Uci::ponderhit},
      {"stop", &Uci::stop},
      {"debug", &Uci::debug},
      {"quit", &Uci::quit},
  };

  if (*command == '\0') return uciMode_;
  if (uciMode_) trace(command, rest);
  Tokenizer words;
  words.setArgs(rest);
  for (const Handler& handler : Handlers) {
    if (!equalsIgnoreCase(command, handler.name)) continue;
    if (handler.run == &Uci::debug && !profile_->knowsDebug) continue;
    (this->*handler.run)(words);
    std::fflush(out_);
    flushLog();
    return true;
  }
  if (uciMode_) std::fprintf(stderr, "unknown uci command: %s\n", command);
  return false;
}

void Uci::uci(Tokenizer& /*words*/) {
  logOff();
  redirectErrors(errorLog_);
  std::string text = "\n";
  text.append("id name ").append(EngineName).append("-").append(EngineVersion).append("\n");
  text.append("id author ").append(EngineAuthor).append("\n");
  text += options_.announcement();
  text += "uciok\n";
  send(text);
  uciMode_ = true;
  trace("<--uciok");
}

void Uci::isready(Tokenizer& /*words*/) {
  send("readyok\n");
  trace("<--readyok");
}

void Uci::ucinewgame(Tokenizer& /*words*/) {
  forgetGame();
  if (!profile_->newGameClears) return;
  stopRunningSearch();
  pool_.state.tt.clear();
  pool_.clearEvaluators();
}

void Uci::debug(Tokenizer& words) { debug_ = equalsIgnoreCase(words.nextWord(), "on"); }

void Uci::forgetGame() {
  lastBookPly_ = 0;
  lastGoPly_ = 0;
}

void Uci::quit(Tokenizer& /*words*/) {
  std::fflush(out_);
  trace("exit()!\n");
  // A search may still run: the process ends under it, without taking anything down.
  std::fflush(stdout);
  std::_Exit(0);
}

void Uci::setoption(Tokenizer& words) {
  const Options::Option* option = options_.find(words);
  if (option == nullptr) return;
  if (Options::needsIdle(*option)) {
    const UciStatus old = stopRunningSearch();
    if (isRunning(old)) {
      std::fprintf(stderr, "uci::setoption(): search still running? status=%i\n", old);
    }
  }
  if (const std::string refusal = options_.set(*option, words); !refusal.empty()) tell(refusal);
}

void Uci::stop(Tokenizer& /*words*/) {
  const UciStatus old = setStatus(Finished);
  if (profile_->answersOnce && (old == Finished || old == Position)) {
    setStatus(old);
    return;
  }
  switch (old) {
    case Finished:
      repeatAnswer({answer_.best, NoMove});
      break;
    case Withheld:
    case Analysed:
      repeatAnswer({answer_.best, profile_->answersOnce ? answer_.ponder : NoMove});
      break;
    case Position:
      std::fprintf(stderr, "uci:: stop without preceeding go?\n");
      answer_ = {};
      sendBestMove(answer_);
      break;
    case Searching:
    case Pondering:
    case Analysing:
      trace("uci:stop() START\n");
      pool_.stopAll();
      trace("uci:stop() END\n");
      break;
  }
}

void Uci::ponderhit(Tokenizer& /*words*/) {
  const UciStatus old = changeStatus(Pondering, Searching);
  if (profile_->answersOnce && old != Pondering && old != Withheld) return;
  switch (old) {
    case Finished:
    case Withheld:
      trace("uci:ponderhit(): already finished\n");
      setStatus(Finished);
      repeatAnswer(answer_);
      break;
    case Position:
      std::fprintf(stderr, "uci:: ponderhit without preceeding go(): send bestmove 0000\n");
      answer_ = {};
      sendBestMove(answer_);
      break;
    case Searching:
    case Analysing:
    case Analysed:
      std::fprintf(stderr, "uci::ponderhit status==SEARCHING, ponderhit ignored\n");
      break;
    case Pondering:
      // A search that would have ended but for the pondering has nothing more to think about.
      // Both are sequentially consistent: infinite is cleared first, then the reason is read. The
      // end of an iteration (iterate in search/root.cpp) stores the reason and then reads infinite,
      // so one of the two sees the other's change.
      pool_.state.timeControl.ponderhit();
      if (pool_.state.stopReason.load() != StopNone) pool_.stopAll();
      break;
  }
}

void Uci::searchFinished(int depth, int /*score*/, Move /*move*/) {
  RootMoveList& moves = pool_.state.rootMoves;
  if (pool_.state.request.lines != 0) {
    moves.bringToFront(drawRootMove(moves, strength_, board_.key));
  }
  printFinalBlock(depth);
  throttle_.reset();  // for the next search
  answer_ = {moves.bestMove(), moves.ponderMove()};
  const Answer answer = answer_;  // the member may change once the status has changed
  UciStatus status;
  {
    const std::lock_guard guard(statusLock_);
    status = status_ == Pondering ? Withheld : status_ == Analysing ? Analysed : Finished;
    status_ = status;
  }
  if (isWithheld(status)) {
    trace("Uci:finish() delay sending bestmove, status is still 'pondering'\n");
  } else {
    sendBestMove(answer);
  }
}

void Uci::repeatAnswer(Answer answer) {
  // The search thread may still be on its way from setting the status to sending its answer, which
  // must not come behind this one: the GUI could take it for the answer to its next "go".
  pool_.waitIdle();
  sendBestMove(answer);
}

void Uci::reportCurrentMove(int depth, int moveIndex, Move move) {
  if (!options_.sendPv()) return;
  const std::uint32_t elapsed = pool_.state.timeControl.elapsed();
  if (!throttle_.admitsCurrentMove(moveIndex, elapsed)) return;
  send(currentMoveLine(depth, moveIndex, move, SearchSnapshot::of(pool_.state, elapsed),
                       profile_->promotions));
}

void Uci::reportPv(int depth, int score, Move move) {
  if (!options_.sendPv() || !isShown(move)) return;
  if (!throttle_.admitsPv(depth, score, move, pool_.state.timeControl.elapsed())) return;
  printPvBlock(depth);
  throttle_.pvShown(depth, score, move);
}

int Uci::shownLines() const {
  const SearchState& state = pool_.state;
  return lineCount(state.rootMoves, state.request.lines != 0 ? wantedLines_ : state.activeMultiPv);
}

bool Uci::isShown(Move move) const {
  const RootMoveList& moves = pool_.state.rootMoves;
  for (int i = 0; i < shownLines(); ++i) {
    if (moves.at(i).move == move) return true;
  }
  return false;
}

void Uci::printPvBlock(int filterDepth) {
  const PvBlockOptions options = {shownLines(), filterDepth, options_.sendPv(),
                                  profile_->promotions};
  send(pvBlock(pool_.state.rootMoves, options,
               SearchSnapshot::of(pool_.state, pool_.state.timeControl.elapsed())));
}

void Uci::printFinalBlock(int depth) {
  if (!profile_->endsWithLine) {
    printPvBlock(depth);
    return;
  }
  SearchState& state = pool_.state;
  RootMoveList& moves = state.rootMoves;
  RootMove& best = moves.at(0);
  // A search that was stopped before it had tried a move plays the first one all the same.
  if (best.bound == NotSearched) {
    if (best.move != NoMove)
      best.score = static_cast<std::int16_t>(evaluate(state.master().evaluator));
    best.bound = Exact;
  }
  Move* const line = moves.lines[moves.order[0]].data();
  if (line[0] == NoMove) {
    line[0] = best.move;
    line[1] = NoMove;
  }
  const PvBlockOptions options = {.lines = shownLines(),
                                  .filterDepth = depth,
                                  .sendPv = true,
                                  .promotions = profile_->promotions,
                                  .isFinal = true};
  send(pvBlock(moves, options, SearchSnapshot::of(state, state.timeControl.elapsed())));
}

UciStatus Uci::setStatus(UciStatus status) {
  const std::lock_guard guard(statusLock_);
  const UciStatus old = status_;
  status_ = status;
  return old;
}

UciStatus Uci::changeStatus(UciStatus from, UciStatus to) {
  const std::lock_guard guard(statusLock_);
  const UciStatus old = status_;
  if (old == from) status_ = to;
  return old;
}

UciStatus Uci::status() {
  const std::lock_guard guard(statusLock_);
  return status_;
}

bool Uci::isSearching() { return isRunning(status()) && pool_.isSearching(); }

UciStatus Uci::stopRunningSearch() {
  UciStatus old;
  {
    const std::lock_guard guard(statusLock_);
    old = status_;
    if (isRunning(old)) status_ = Finished;
  }
  if (isRunning(old)) pool_.stopAll();
  pool_.waitIdle();
  return old;
}

void Uci::finish() {
  if (isSearching() && pool_.state.timeControl.infinite()) {
    stopRunningSearch();
  } else {
    pool_.waitIdle();
  }
  if (profile_->answersOnce && isWithheld(status())) {
    setStatus(Finished);
    sendBestMove(answer_);
  }
}

void Uci::sendBestMove(Answer answer) {
  char move[MoveTextSize];
  std::string text = "bestmove ";
  if (answer.best == NoMove && profile_->endsWithLine) {
    text += "(none)";
  } else {
    uciMoveText(move, answer.best, profile_->promotions);
    text += move;
  }
  if (answer.ponder != NoMove) {
    uciMoveText(move, answer.ponder, profile_->promotions);
    text.append(" ponder ").append(move);
  }
  text += '\n';
  send(text);
  if (answer.best == NoMove) std::fprintf(stderr, "No move generated! bm=%x\n", answer.best);
}

void Uci::tell(const std::string& text) { send("info string " + text + "\n"); }

void Uci::send(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), out_);
  std::fflush(out_);
  requireOutput(out_);
}

}  // namespace quill
