#include "uci/uci.h"

#include <cstdlib>

#include "board/notation.h"
#include "platform/standard_error.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "uci/names.h"

namespace quill {

namespace {

// Standard error goes to the file, behind what earlier games left there. Where the file can't be
// opened it stays as it is.
void redirectErrors(const char* path) {
  std::FILE* probe = std::fopen(path, "a");
  if (probe == nullptr) return;
  std::fclose(probe);
  platform::keepStandardErrorOpen();
  if (std::freopen(path, "a", stderr) != nullptr) std::setvbuf(stderr, nullptr, _IONBF, 0);
}

constexpr bool isRunning(UciStatus status) { return status == Searching || status == Pondering; }

}  // namespace

Uci::Uci(ThreadPool& pool, EvalTables& evalTables, BookSelector& book, std::FILE* out,
         const char* errorLog)
    : pool_(pool),
      board_(pool.board()),
      book_(book),
      out_(out),
      errorLog_(errorLog),
      options_(pool, evalTables) {}

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
      {"quit", &Uci::quit},
  };

  if (*command == '\0') return uciMode_;
  if (uciMode_) trace(command, rest);
  Tokenizer words;
  words.setArgs(rest);
  for (const Handler& handler : Handlers) {
    if (!equalsIgnoreCase(command, handler.name)) continue;
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
  if (errorLog_ != nullptr) redirectErrors(errorLog_);
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

void Uci::ucinewgame(Tokenizer& /*words*/) { forgetGame(); }

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
  const Options::Option* option = Options::find(words);
  if (option == nullptr) return;
  if (Options::needsIdle(*option)) {
    const UciStatus old = stopRunningSearch();
    if (isRunning(old)) {
      std::fprintf(stderr, "uci::setoption(): search still running? status=%i\n", old);
    }
  }
  options_.set(*option, words);
}

void Uci::stop(Tokenizer& /*words*/) {
  switch (setStatus(Finished)) {
    case Finished:
    case Withheld:
      repeatAnswer({answer_.best, NoMove});
      break;
    case Position:
      std::fprintf(stderr, "uci:: stop without preceeding go?\n");
      answer_ = {};
      sendBestMove(answer_);
      break;
    case Searching:
    case Pondering:
      trace("uci:stop() START\n");
      pool_.stopAll();
      trace("uci:stop() END\n");
      break;
  }
}

void Uci::ponderhit(Tokenizer& /*words*/) {
  switch (setStatus(Searching)) {
    case Finished:
    case Withheld:
      trace("uci:ponderhit(): already finished\n");
      setStatus(Finished);
      repeatAnswer(answer_);
      break;
    case Position:
      std::fprintf(stderr, "uci:: ponderhit without preceeding go(): send bestmove 0000\n");
      setStatus(Position);
      answer_ = {};
      sendBestMove(answer_);
      break;
    case Searching:
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
  printPvBlock(depth);
  throttle_.reset();  // for the next search
  answer_ = {pool_.state.rootMoves.bestMove(), pool_.state.rootMoves.ponderMove()};
  const Answer answer = answer_;  // the member may change once the status has changed
  UciStatus status;
  {
    const std::lock_guard guard(statusLock_);
    status = status_ == Pondering ? Withheld : Finished;
    status_ = status;
  }
  if (status == Withheld) {
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
  send(currentMoveLine(depth, moveIndex, move, SearchSnapshot::of(pool_.state, elapsed)));
}

void Uci::reportPv(int depth, int score, Move move) {
  if (!options_.sendPv()) return;
  if (!throttle_.admitsPv(depth, score, move, pool_.state.timeControl.elapsed())) return;
  printPvBlock(depth);
  throttle_.pvShown(depth, score, move);
}

void Uci::printPvBlock(int filterDepth) {
  const PvBlockOptions options = {lineCount(pool_.state.rootMoves, pool_.state.activeMultiPv),
                                  filterDepth, options_.sendPv()};
  send(pvBlock(pool_.state.rootMoves, options,
               SearchSnapshot::of(pool_.state, pool_.state.timeControl.elapsed())));
}

UciStatus Uci::setStatus(UciStatus status) {
  const std::lock_guard guard(statusLock_);
  const UciStatus old = status_;
  status_ = status;
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
}

void Uci::sendBestMove(Answer answer) {
  char move[MoveTextSize];
  uciMoveText(move, answer.best);
  std::string text = "bestmove ";
  text += move;
  if (answer.ponder != NoMove) {
    uciMoveText(move, answer.ponder);
    text.append(" ponder ").append(move);
  }
  text += '\n';
  send(text);
  if (answer.best == NoMove) std::fprintf(stderr, "No move generated! bm=%x\n", answer.best);
}

void Uci::send(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), out_);
  std::fflush(out_);
}

}  // namespace quill
