// The Universal Chess Interface: takes a GUI's commands, runs searches for it and reports on them.
//
// Every input line is offered to dispatch. A status keeps the commands and the end of a search in
// step: each side exchanges it for a new value and acts on the old one, so that exactly one of them
// sends the move, the search that ends or the command that asks for it. Commands out of sequence
// are tolerated: each gets a line of its own on standard error and the best answer there is.
//
// Threads: the input thread calls everything but the listener operations, which arrive on the
// search's master thread. Both write to the output stream; each line or block is one write. The
// answer and the throttle belong to the master while a search runs, else to the input thread; the
// status orders them.
#pragma once

#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>

#include "board/move.h"
#include "search/listener.h"
#include "shell/text.h"
#include "time/time_control.h"
#include "uci/info.h"
#include "uci/options.h"
#include "uci/profile.h"
#include "uci/strength.h"

namespace quill {

class Book;
class BookSelector;
struct Board;
struct EvalTables;
struct RootRequest;
struct ThreadPool;

enum UciStatus : int {
  Finished = 0,   // no search runs; the last one's answer is known
  Position = 1,   // a position was set; "go" is expected
  Searching = 2,  // the search sends its answer when it ends
  Pondering = 3,  // the answer waits for "ponderhit" or "stop"
  Withheld = 4,   // a ponder search has ended by itself; its answer still waits
  Analysing = 5,  // an infinite search: the answer waits for "stop"
  Analysed = 6,   // it has ended by itself; its answer still waits
};

// Whether a search has been started whose end is still to come.
constexpr bool isRunning(UciStatus status) {
  return status == Searching || status == Pondering || status == Analysing;
}
// Whether a search has ended whose answer waits for a command.
constexpr bool isWithheld(UciStatus status) { return status == Withheld || status == Analysed; }

class Uci final : public SearchListener {
 public:
  // Protocol lines go to out. All arguments must outlive the object.
  Uci(ThreadPool& pool, EvalTables& evalTables, Book& bookFile, BookSelector& book, std::FILE* out);

  // The classic profile at first. To be called before any command.
  void setProfile(const Profile& profile);
  const Profile& profile() const { return *profile_; }
  // Where standard error goes from "uci" on: a file, "none" or, as at first, "stderr".
  void setErrorLog(std::string name) { errorLog_ = std::move(name); }
  Options& options() { return options_; }

  // Runs the command of a line. True when it was one of the protocol's.
  bool dispatch(const char* command, const char* rest);

  bool uciMode() const { return uciMode_; }
  UciStatus status();
  // Whether a search that a command started has not ended yet.
  bool isSearching();
  // At the end of input: waits for a limited search to answer; ends an unlimited one. Blocks.
  void finish();

  void reportCurrentMove(int depth, int moveIndex, Move move) override;
  void reportPv(int depth, int score, Move move) override;
  void searchFinished(int depth, int score, Move move) override;

 private:
  // The answer to a "go"; the moves are 0 where there are none.
  struct Answer {
    Move best = NoMove;
    Move ponder = NoMove;
  };

  // The commands, each with the words behind its own.
  void uci(Tokenizer& words);
  void position(Tokenizer& words);
  void go(Tokenizer& words);
  void isready(Tokenizer& words);
  void setoption(Tokenizer& words);
  void ucinewgame(Tokenizer& words);
  void ponderhit(Tokenizer& words);
  void stop(Tokenizer& words);
  void debug(Tokenizer& words);
  [[noreturn]] void quit(Tokenizer& words);

  UciStatus setStatus(UciStatus status);
  // Changes the status where it is the first one. Returns what it was.
  UciStatus changeStatus(UciStatus from, UciStatus to);
  // Ends a search that runs, so that it sends its answer, and waits until all threads are idle.
  // Returns the status that it found; one of no search is left alone.
  UciStatus stopRunningSearch();

  bool setPosition(Tokenizer& words);
  void playMoves(Tokenizer& words);
  bool probeBook();
  // Takes the parameters of a "go" off its words; what is asked of the root goes into the request.
  SearchLimits readLimits(Tokenizer& words, RootRequest& request) const;
  void readRequest(std::string_view word, Tokenizer& words, RootRequest& request) const;
  void completeLimits(SearchLimits& limits, const RootRequest& request) const;
  // Notes how the search that is about to start is to be played and shown, and asks it for that.
  void limitStrength(SearchLimits& limits, RootRequest& request);
  // What limits the search that is about to start, for "debug on".
  void tellBudgets();
  // Whether the search of a "go" may be replaced by a look into the book.
  bool mayPlayFromBook(const SearchLimits& limits, const RootRequest& request) const;
  // The next position belongs to another game.
  void forgetGame();

  // Lines to show, at most the number of root moves.
  int shownLines() const;
  bool isShown(Move move) const;
  void printPvBlock(int filterDepth);
  // The last lines of a search, at its end.
  void printFinalBlock(int depth);
  void sendBestMove(Answer answer);
  // Sends an earlier answer again, once all threads are idle.
  void repeatAnswer(Answer answer);
  // An "info string" line, for what a person should see.
  void tell(const std::string& text);
  void send(const std::string& text);

  ThreadPool& pool_;
  Board& board_;  // the position to search: the master's
  BookSelector& book_;
  std::FILE* out_;
  std::string errorLog_ = "stderr";

  const Profile* profile_ = &ClassicProfile;
  Options options_;
  bool uciMode_ = false;
  bool debug_ = false;         // "debug on": the budgets of each search are told
  std::uint32_t reserve_ = 0;  // ms of the clock that are never planned with

  UciStatus status_ = Finished;
  std::mutex statusLock_;
  int lastGoPly_ = 0;    // game ply of the last "go", to notice a new game
  int lastBookPly_ = 0;  // game ply of the last book move, 0 = none
  Answer answer_;        // the last one, to be sent again on request
  InfoThrottle throttle_;
  // Of a search whose request names its lines: those that the GUI wants, and the player to be.
  int wantedLines_ = 1;
  Strength strength_{};
};

}  // namespace quill
