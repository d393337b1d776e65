#include "uci/options.h"

#include <algorithm>
#include <cstdio>

#include "book/book.h"
#include "book/book_path.h"
#include "eval/weights.h"
#include "search/tt.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"
#include "uci/names.h"
#include "uci/strength.h"

namespace quill {

namespace {

enum OptionType { Spin, Check, Text, About, Button };
// Who is told of it and may set it.
enum OptionScope {
  Common,     // everyone
  Late,       // only where more options are offered
  LateShown,  // everyone may, but it is announced only there
  Secret      // everyone may, but it is announced nowhere
};
// How the announcement is padded.
enum OptionLayout {
  Plain,  // the name to 15 columns
  Typed,  // and the type to 6
  Wide    // the name to 26
};

}  // namespace

struct Options::Option {
  const char* name;  // of two words: the second is no value and has to follow
  OptionType type;
  int defaultValue;  // of a check: 0 or 1; what a missing number stands for
  int min;           // numbers outside min..max are moved into it
  int max;
  bool needsIdle;  // can't change under a search
  OptionLayout layout;
  OptionScope scope;
  int index;  // of an evaluation weight
  void (Options::*set)(const Option& option, Tokenizer& words);

  int clamped(int value) const { return std::clamp(value, min, max); }
};

namespace {

// How the protocol writes an empty text.
constexpr char NoText[] = "<empty>";

// The value, with or without the word "value" before it.
EngineString readValue(Tokenizer& words) {
  EngineString token = words.nextToken();
  return equalsIgnoreCase(token.text(), "value") ? words.nextToken() : token;
}

int readInt(Tokenizer& words, int defaultValue) {
  const EngineString value = readValue(words);
  return value.isEmpty() ? defaultValue : parseInt(value.text());
}

// The value behind the word "value", which is skipped unseen.
int readIntBehindWord(Tokenizer& words, int defaultValue) {
  words.nextWord();
  return words.nextInt(defaultValue);
}

bool readBool(Tokenizer& words) { return equalsIgnoreCase(readValue(words).text(), "true"); }

}  // namespace

// clang-format off
const Options::Option Options::Table[] = {
    // name                        type    default               min max         idle   layout scope index
    {"UCI_EngineAbout",            About,  0,                    0, 0,          false, Plain, Common, 0, nullptr},
    {"UCI_Opponent",               Text,   0,                    0, 0,          false, Plain, Common, 0, &Options::setOpponent},
    {"UCI_AnalyseMode",            Check,  0,                    0, 1,          false, Plain, Common, 0, &Options::setAnalyseMode},
    // the default is the number in use
    {"Threads",                    Spin,   1,                    1, MaxThreads, true,  Typed, Common, 0, &Options::setThreads},
    {"Hash",                       Spin,   Tt::DefaultMegabytes, 1, 4096,       true,  Typed, Common, 0, &Options::setHash},
    {"Ponder",                     Check,  1,                    0, 1,          false, Typed, Common, 0, &Options::setPonder},
    {"MultiPV",                    Spin,   1,                    1, 256,        false, Typed, Common, 0, &Options::setMultiPv},
    // the default is the profile's
    {"MultiPVMargin",              Spin,   DefaultMultiPvMargin, 0, 2000,       false, Typed, Common, 0, &Options::setMultiPvMargin},
    {"OwnBook",                    Check,  1,                    0, 1,          false, Typed, Common, 0, &Options::setOwnBook},
    {"Book File",                  Text,   0,                    0, 0,          false, Plain, Late,   0, &Options::setBookFile},
    // ms; the default is the profile's, or what the settings file says
    {"Move Overhead",              Spin,   0,                    0, 5000,       false, Plain, Late,   0, &Options::setMoveOverhead},
    {"UCI_LimitStrength",          Check,  0,                    0, 1,          false, Plain, Late,   0, &Options::setLimitStrength},
    {"UCI_Elo",                    Spin,   MaxElo,               MinElo, MaxElo, false, Plain, Late,  0, &Options::setElo},
    // percent
    {"eval.mobility.opening",      Spin,   100,                  0, 1000,       true,  Wide,  Common, MobilityOpening, &Options::setWeight},
    {"eval.mobility.endgame",      Spin,   100,                  0, 1000,       true,  Wide,  Common, MobilityEndgame, &Options::setWeight},
    {"eval.passedpawns.opening",   Spin,   100,                  0, 1000,       true,  Wide,  Common, PassedPawnsOpening, &Options::setWeight},
    {"eval.passedpawns.endgame",   Spin,   100,                  0, 1000,       true,  Wide,  Common, PassedPawnsEndgame, &Options::setWeight},
    {"eval.pawnstructure.opening", Spin,   100,                  0, 1000,       true,  Wide,  Common, PawnStructureOpening, &Options::setWeight},
    {"eval.pawnstructure.endgame", Spin,   100,                  0, 1000,       true,  Wide,  Common, PawnStructureEndgame, &Options::setWeight},
    {"eval.kingattack",            Spin,   100,                  0, 1000,       true,  Wide,  Common, KingAttack, &Options::setWeight},
    {"Clear Hash",                 Button, 0,                    0, 0,          true,  Plain, LateShown, 0, &Options::clearHash},
    {"SendPv",                     Check,  1,                    0, 1,          false, Plain, Secret, 0, &Options::setSendPv},
};
// clang-format on

void Options::setProfile(const Profile& profile) {
  profile_ = &profile;
  overhead_ = profile.overhead;
  pool_.state.multiPvMargin = profile.multiPvMargin;
}

int Options::defaultOf(const Option& option) const {
  if (option.set == &Options::setThreads) return pool_.threadCount();
  if (option.set == &Options::setMultiPvMargin) return profile_->multiPvMargin;
  if (option.set == &Options::setMoveOverhead) return static_cast<int>(overhead_);
  return option.defaultValue;
}

std::string Options::announcement() const {
  std::string text;
  for (const Option& option : Table) {
    if (option.scope == Secret) continue;
    if (option.scope != Common && !profile_->offersMoreOptions) continue;
    text += announcementOf(option);
  }
  return text;
}

std::string Options::announcementOf(const Option& option) const {
  constexpr const char* TypeNames[] = {"spin", "check", "string", "string", "button"};
  const int nameWidth = option.layout == Wide ? 26 : 15;
  const int typeWidth = option.layout == Typed ? 6 : 0;
  std::string text;
  appendFormat(text, "option name %-*s type %-*s", profile_->padsOptions ? nameWidth : 0,
               option.name, profile_->padsOptions ? typeWidth : 0, TypeNames[option.type]);
  if (option.type == Spin) {
    appendFormat(text, " default %i min %i max %i", defaultOf(option), option.min, option.max);
  } else if (option.type == Check) {
    appendFormat(text, " default %s", option.defaultValue != 0 ? "true" : "false");
  } else if (option.type == About) {
    appendFormat(text, " default %s-%s by %s", EngineName, EngineVersion, EngineAuthor);
  } else if (option.type == Text && profile_->offersMoreOptions) {
    const bool isBook = option.set == &Options::setBookFile && !bookName_.empty();
    text.append(" default ").append(isBook ? bookName_ : NoText);
  }
  return text + '\n';
}

const Options::Option* Options::find(Tokenizer& words) const {
  std::string_view name = words.nextWord();
  if (equalsIgnoreCase(name, "name")) name = words.nextWord();
  for (const Option& option : Table) {
    const std::string_view full = option.name;
    const std::size_t blank = std::min(full.find(' '), full.size());
    if (option.set == nullptr || !equalsIgnoreCase(name, full.substr(0, blank))) continue;
    if (option.scope == Late && !profile_->offersMoreOptions) continue;
    if (blank == full.size()) return &option;
    return equalsIgnoreCase(words.nextWord(), full.substr(blank + 1)) ? &option : nullptr;
  }
  std::fprintf(stderr, "Option not supported: %.*s\n", static_cast<int>(name.size()), name.data());
  return nullptr;
}

bool Options::needsIdle(const Option& option) { return option.needsIdle; }

std::string Options::set(const Option& option, Tokenizer& words) {
  complaint_.clear();
  (this->*option.set)(option, words);
  return complaint_;
}

void Options::setAnalyseMode(const Option&, Tokenizer& words) { analyseMode_ = readBool(words); }

void Options::setLimitStrength(const Option&, Tokenizer& words) {
  limitsStrength_ = readBool(words);
}

void Options::setElo(const Option& option, Tokenizer& words) {
  elo_ = option.clamped(readInt(words, option.defaultValue));
}

void Options::setMoveOverhead(const Option& option, Tokenizer& words) {
  overhead_ = static_cast<std::uint32_t>(option.clamped(readInt(words, defaultOf(option))));
}

// The name is the rest of the line: it may hold blanks.
void Options::setBookFile(const Option&, Tokenizer& words) {
  Tokenizer behind = words;
  if (equalsIgnoreCase(behind.nextWord(), "value")) words = behind;
  if (!openBookFile(words.rest())) complaint_ = std::string("book not found: ") + words.rest();
}

bool Options::openBookFile(const std::string& name) {
  if (name.empty() || name == NoText) {
    book_.open(nullptr);
    bookName_.clear();
    return true;
  }
  const std::string path = openBook(book_, name, profile_->seeksBook);
  if (path.empty()) return false;
  bookName_ = path;
  return true;
}

void Options::setOpponent(const Option&, Tokenizer& words) {
  words.nextWord();  // "value"
  opponentTitle_ = words.nextToken();
  opponentElo_ = words.nextInt(0);
  opponentType_ = words.nextToken();
  opponentName_ = words.nextToken();
  log("Opponent=%s %s, %s, elo=%i\n", opponentTitle_.text(), opponentName_.text(),
      opponentType_.text(), opponentElo_);
}

void Options::setMultiPv(const Option& option, Tokenizer& words) {
  const int lines = readInt(words, option.defaultValue);
  log("multipv=%i\n", lines);
  // 0 is kept, and counts as one line.
  pool_.state.multiPv = std::clamp(lines, 0, option.max);
}

void Options::setMultiPvMargin(const Option& option, Tokenizer& words) {
  pool_.state.multiPvMargin = option.clamped(readInt(words, defaultOf(option)));
}

void Options::setHash(const Option& option, Tokenizer& words) {
  const int megabytes = readIntBehindWord(words, option.defaultValue);
  log("resizing hash to %uMb\n", static_cast<unsigned>(megabytes));
  pool_.state.tt.resize(static_cast<std::uint64_t>(option.clamped(megabytes)) * 1024);
}

void Options::clearHash(const Option&, Tokenizer&) {
  pool_.state.tt.clear();
  pool_.clearEvaluators();
  trace("tt cleared");
}

void Options::setPonder(const Option&, Tokenizer& words) {
  const bool canPonder = readBool(words);
  pool_.state.timeControl.setCanPonder(canPonder);
  log("canponder=%u\n", static_cast<unsigned>(canPonder));
}

void Options::setSendPv(const Option&, Tokenizer& words) {
  const bool sendPv = readBool(words);
  sendPv_.store(sendPv, std::memory_order_relaxed);
  log("sendpv=%u\n", static_cast<unsigned>(sendPv));
}

void Options::setOwnBook(const Option&, Tokenizer& words) {
  ownBook_ = readBool(words);
  log("usebook=%u\n", static_cast<unsigned>(ownBook_));
}

void Options::setThreads(const Option& option, Tokenizer& words) {
  const int threads = readIntBehindWord(words, option.defaultValue);
  log("setting cpus=%i\n", threads);
  pool_.setThreadCount(option.clamped(threads));
}

void Options::setWeight(const Option& option, Tokenizer& words) {
  const int percent = option.clamped(readInt(words, option.defaultValue));
  setEvalWeight(evalTables_, option.index, percent * EvalWeightOne / 100);
}

}  // namespace quill
