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

namespace quill {

class BookSelector;
struct Board;
struct EvalTables;
struct ThreadPool;

enum UciStatus : int {
  Finished = 0,   // no search runs; the last one's answer is known
  Position = 1,   // a position was set; "go" is expected
  Searching = 2,  // the search sends its answer when it ends
  Pondering = 3,  // the answer waits for "ponderhit" or "stop"
  Withheld = 4,   // a ponder search has ended by itself; its answer still waits
};

class Uci final : public SearchListener {
 public:
  // Protocol lines go to out; "uci" redirects standard error to the file of the name given, if any.
  // All arguments must outlive the object.
  Uci(ThreadPool& pool, EvalTables& evalTables, BookSelector& book, std::FILE* out,
      const char* errorLog = nullptr);

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
  [[noreturn]] void quit(Tokenizer& words);

  UciStatus setStatus(UciStatus status);
  // Ends a search that runs, so that it sends its answer, and waits until all threads are idle.
  // Returns the status that it found; one of no search is left alone.
  UciStatus stopRunningSearch();

  bool setPosition(Tokenizer& words);
  void playMoves(Tokenizer& words);
  bool probeBook();
  SearchLimits readLimits(Tokenizer& words) const;
  // The next position belongs to another game.
  void forgetGame();

  void printPvBlock(int filterDepth);
  void sendBestMove(Answer answer);
  // Sends an earlier answer again, once all threads are idle.
  void repeatAnswer(Answer answer);
  void send(const std::string& text);

  ThreadPool& pool_;
  Board& board_;  // the position to search: the master's
  BookSelector& book_;
  std::FILE* out_;
  const char* errorLog_;

  Options options_;
  bool uciMode_ = false;
  std::uint32_t reserve_ = 3000;  // ms of the clock that are never planned with

  UciStatus status_ = Finished;
  std::mutex statusLock_;
  int lastGoPly_ = 0;    // game ply of the last "go", to notice a new game
  int lastBookPly_ = 0;  // game ply of the last book move, 0 = none
  Answer answer_;        // the last one, to be sent again on request
  InfoThrottle throttle_;
};

}  // namespace quill
