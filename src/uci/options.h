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
#include "uci/profile.h"
#include "uci/strength.h"

namespace quill {

class Book;
struct EvalTables;
struct ThreadPool;

class Options {
 public:
  struct Option;

  // All must outlive the object.
  Options(ThreadPool& pool, EvalTables& evalTables, Book& book)
      : pool_(pool), evalTables_(evalTables), book_(book) {}

  // Sets what the profile says in place of a default.
  void setProfile(const Profile& profile);
  // The announcement of all options that the profile offers, a line each.
  std::string announcement() const;

  // Takes the name of a "setoption" off its words. None when there is no such option; standard
  // error then gets one line, except for a "Clear" without "Hash".
  const Option* find(Tokenizer& words) const;
  // Whether the option changes what a running search uses.
  static bool needsIdle(const Option& option);
  // Takes the value off the words and sets the option to it. Returns a complaint, empty when all is
  // well. Requires: no search runs where needsIdle says so.
  std::string set(const Option& option, Tokenizer& words);

  // Opens the book of the name, an empty one or "<empty>" closing the book in use.
  // On failure: false, and the book in use stays.
  bool openBookFile(const std::string& name);
  // The path of the book in use, empty without one.
  const std::string& bookName() const { return bookName_; }

  // Milliseconds of each move that pass outside the engine.
  std::uint32_t overhead() const { return overhead_; }
  void setOverhead(std::uint32_t ms) { overhead_ = ms; }
  // Whether moves are to be those of a player of the rating elo().
  bool limitsStrength() const { return limitsStrength_; }
  int elo() const { return elo_; }
  bool analyseMode() const { return analyseMode_; }
  bool ownBook() const { return ownBook_; }
  bool sendPv() const { return sendPv_.load(std::memory_order_relaxed); }

 private:
  static const Option Table[];

  int defaultOf(const Option& option) const;
  std::string announcementOf(const Option& option) const;

  void setAnalyseMode(const Option& option, Tokenizer& words);
  void setMoveOverhead(const Option& option, Tokenizer& words);
  void setLimitStrength(const Option& option, Tokenizer& words);
  void setElo(const Option& option, Tokenizer& words);
  void setBookFile(const Option& option, Tokenizer& words);
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
  Book& book_;
  const Profile* profile_ = &ClassicProfile;

  std::string complaint_;  // of the set that runs
  std::string bookName_;
  std::uint32_t overhead_ = 0;  // ms
  bool limitsStrength_ = false;
  int elo_ = MaxElo;
  bool analyseMode_ = false;
  EngineString opponentName_;
  EngineString opponentTitle_;
  EngineString opponentType_;
  int opponentElo_ = 0;
  bool ownBook_ = true;
  // Principal variations are sent. Relaxed: a search may see a change a line later.
  std::atomic<bool> sendPv_{true};
};

}  // namespace quill
