// The options that a GUI can set: how each is announced, its default and range, and what it does.
//
// Values that belong to another object are set there (the pool, the table, the clock, the weights);
// the protocol's own are kept here.
//
// Threads: the input thread, but for sendPv, which the search's master thread reads too.
#pragma once

#include <atomic>
#include <string>

#include "shell/text.h"

namespace quill {

struct EvalTables;
struct ThreadPool;

class Options {
 public:
  struct Option;

  // Both must outlive the object.
  Options(ThreadPool& pool, EvalTables& evalTables) : pool_(pool), evalTables_(evalTables) {}

  // The announcement of all options, a line each.
  std::string announcement() const;

  // Takes the name of a "setoption" off its words. None when there is no such option; standard
  // error then gets one line, except for a "Clear" without "Hash".
  static const Option* find(Tokenizer& words);
  // Whether the option changes what a running search uses.
  static bool needsIdle(const Option& option);
  // Takes the value off the words and sets the option to it. Requires: no search runs where
  // needsIdle says so.
  void set(const Option& option, Tokenizer& words);

  bool ownBook() const { return ownBook_; }
  bool sendPv() const { return sendPv_.load(std::memory_order_relaxed); }

 private:
  static const Option Table[];

  void setNothing(const Option& option, Tokenizer& words);
  void setOpponent(const Option& option, Tokenizer& words);
  void setMultiPv(const Option& option, Tokenizer& words);
  void setMultiPvMargin(const Option& option, Tokenizer& words);
  void setHash(const Option& option, Tokenizer& words);
  void clearHash(const Option& option, Tokenizer& words);
  void setPonder(const Option& option, Tokenizer& words);
  void setSendPv(const Option& option, Tokenizer& words);
  void setOwnBook(const Option& option, Tokenizer& words);
  void setThreads(const Option& option, Tokenizer& words);
  void setWeight(const Option& option, Tokenizer& words);

  ThreadPool& pool_;
  EvalTables& evalTables_;

  EngineString opponentName_;
  EngineString opponentTitle_;
  EngineString opponentType_;
  int opponentElo_ = 0;
  bool ownBook_ = true;
  // Principal variations are sent. Relaxed: a search may see a change a line later.
  std::atomic<bool> sendPv_{true};
};

}  // namespace quill
