#include "uci/options.h"

#include <algorithm>
#include <cstdio>

#include "eval/weights.h"
#include "search/tt.h"
#include "shell/log.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"
#include "uci/uci.h"

namespace quill {

namespace {

constexpr int DefaultHash = 32;  // megabytes
constexpr int DefaultMargin = 100;
constexpr int DefaultPercent = 100;

constexpr char ThreadsLine[] = "option name Threads         type spin   default %i min 1 max %i\n";

// Texts that name the engine can't be literals of the table.
std::string aboutLine() {
  std::string text = "option name UCI_EngineAbout type string default ";
  return text.append(EngineName)
             .append("-")
             .append(EngineVersion)
             .append(" by ")
             .append(EngineAuthor) +
         "\n";
}

std::string threadsLine(int threadCount) {
  char text[sizeof ThreadsLine + 16];
  std::snprintf(text, sizeof text, ThreadsLine, threadCount, MaxThreads);
  return text;
}

}  // namespace

// What the options do; each reads its value from the rest of the command.
struct OptionSetter {
  Uci& uci;

  struct Option {
    const char* name;
    void (OptionSetter::*set)(const Option& option);  // none: announced only
    int min;
    int max;
    int index;         // what the setter needs to know besides
    const char* line;  // the announcement; none: hidden, or made by a function of its own
  };
  static const Option Options[];

  EngineString nextToken() { return uci.arguments_.nextToken(); }

  // The value, with or without the word "value" before it.
  EngineString readValue() {
    EngineString token = nextToken();
    return equalsIgnoreCase(token.text(), "value") ? nextToken() : token;
  }
  int readInt(int defaultValue) {
    const EngineString value = readValue();
    return value.isEmpty() ? defaultValue : parseInt(value.text());
  }
  bool readBool() { return equalsIgnoreCase(readValue().text(), "true"); }

  void setNothing(const Option&) {}

  void setOpponent(const Option&) {
    nextToken();  // "value"
    uci.opponentTitle_ = nextToken();
    uci.opponentElo_ = uci.arguments_.nextInt(0);
    uci.opponentType_ = nextToken();
    uci.opponentName_ = nextToken();
    log("Opponent=%s %s, %s, elo=%i\n", uci.opponentTitle_.text(), uci.opponentName_.text(),
        uci.opponentType_.text(), uci.opponentElo_);
  }

  void setMultiPv(const Option& option) {
    const int lines = readInt(1);
    log("multipv=%i\n", lines);
    uci.pool_.multiPv = std::clamp(lines, option.min, option.max);
  }

  void setMultiPvMargin(const Option& option) {
    uci.pool_.multiPvMargin = std::clamp(readInt(DefaultMargin), option.min, option.max);
  }

  void setHash(const Option& option) {
    nextToken();  // "value"
    const int megabytes = uci.arguments_.nextInt(DefaultHash);
    uci.stopForOption();
    log("resizing hash to %uMb\n", static_cast<unsigned>(megabytes));
    uci.pool_.tt.resize(static_cast<std::uint64_t>(std::clamp(megabytes, option.min, option.max)) *
                        1024);
  }

  void clearHash(const Option&) {
    if (!equalsIgnoreCase(nextToken().text(), "Hash")) return;
    uci.stopForOption();
    uci.pool_.tt.clear();
    uci.pool_.clearEvaluators();
    trace("tt cleared");
  }

  void setPonder(const Option&) {
    const bool canPonder = readBool();
    uci.pool_.timeControl.setCanPonder(canPonder);
    log("canponder=%u\n", static_cast<unsigned>(canPonder));
  }

  void setSendPv(const Option&) {
    const bool sendPv = readBool();
    uci.sendPv_.store(sendPv, std::memory_order_relaxed);
    log("sendpv=%u\n", static_cast<unsigned>(sendPv));
  }

  void setOwnBook(const Option&) {
    uci.ownBook_ = readBool();
    log("usebook=%u\n", static_cast<unsigned>(uci.ownBook_));
  }

  void setThreads(const Option& option) {
    nextToken();  // "value"
    const int threads = uci.arguments_.nextInt(1);
    uci.stopForOption();
    log("setting cpus=%i\n", threads);
    uci.pool_.setThreadCount(std::clamp(threads, option.min, option.max));
  }

  void setWeight(const Option& option) {
    const int percent = std::clamp(readInt(DefaultPercent), option.min, option.max);
    uci.stopForOption();
    setEvalWeight(uci.evalTables_, option.index, percent * EvalWeightOne / 100);
  }
};

// clang-format off
const OptionSetter::Option OptionSetter::Options[] = {
    // name                          setter                            min   max  index
    {"UCI_EngineAbout",             nullptr,                          0,    0,    0, nullptr},
    {"UCI_Opponent",                &OptionSetter::setOpponent,       0,    0,    0,
     "option name UCI_Opponent    type string\n"},
    {"UCI_AnalyseMode",             &OptionSetter::setNothing,        0,    0,    0,
     "option name UCI_AnalyseMode type check default false\n"},
    {"Threads",                     &OptionSetter::setThreads,        1,    MaxThreads, 0, nullptr},
    {"Hash",                        &OptionSetter::setHash,           1,    4096, 0,
     "option name Hash            type spin   default 32 min 1 max 4096\n"},
    {"Ponder",                      &OptionSetter::setPonder,         0,    0,    0,
     "option name Ponder          type check  default true\n"},
    // 0 is kept, and counts as one line
    {"MultiPV",                     &OptionSetter::setMultiPv,        0,    256,  0,
     "option name MultiPV         type spin   default 1 min 1 max 256\n"},
    {"MultiPVMargin",               &OptionSetter::setMultiPvMargin,  0,    2000, 0,
     "option name MultiPVMargin   type spin   default 100 min 0 max 2000\n"},
    {"OwnBook",                     &OptionSetter::setOwnBook,        0,    0,    0,
     "option name OwnBook         type check  default true\n"},
    {"eval.mobility.opening",       &OptionSetter::setWeight,         0,    1000, MobilityOpening,
     "option name eval.mobility.opening      type spin default 100 min 0 max 1000\n"},
    {"eval.mobility.endgame",       &OptionSetter::setWeight,         0,    1000, MobilityEndgame,
     "option name eval.mobility.endgame      type spin default 100 min 0 max 1000\n"},
    {"eval.passedpawns.opening",    &OptionSetter::setWeight,         0,    1000, PassedPawnsOpening,
     "option name eval.passedpawns.opening   type spin default 100 min 0 max 1000\n"},
    {"eval.passedpawns.endgame",    &OptionSetter::setWeight,         0,    1000, PassedPawnsEndgame,
     "option name eval.passedpawns.endgame   type spin default 100 min 0 max 1000\n"},
    {"eval.pawnstructure.opening",  &OptionSetter::setWeight,         0,    1000, PawnStructureOpening,
     "option name eval.pawnstructure.opening type spin default 100 min 0 max 1000\n"},
    {"eval.pawnstructure.endgame",  &OptionSetter::setWeight,         0,    1000, PawnStructureEndgame,
     "option name eval.pawnstructure.endgame type spin default 100 min 0 max 1000\n"},
    {"eval.kingattack",             &OptionSetter::setWeight,         0,    1000, KingAttack,
     "option name eval.kingattack            type spin default 100 min 0 max 1000\n"},
    // accepted, but not announced
    {"Clear",                       &OptionSetter::clearHash,         0,    0,    0, nullptr},
    {"SendPv",                      &OptionSetter::setSendPv,         0,    0,    0, nullptr},
};
// clang-format on

std::string optionLines(int threadCount) {
  std::string text;
  for (const OptionSetter::Option& option : OptionSetter::Options) {
    if (option.line != nullptr) text += option.line;
    if (option.set == nullptr) text += aboutLine();
    if (option.set == &OptionSetter::setThreads) text += threadsLine(threadCount);
  }
  return text;
}

void Uci::setoption() {
  EngineString name = arguments_.nextToken();
  if (equalsIgnoreCase(name.text(), "name")) name = arguments_.nextToken();
  for (const OptionSetter::Option& option : OptionSetter::Options) {
    if (option.set == nullptr || !equalsIgnoreCase(name.text(), option.name)) continue;
    OptionSetter setter{*this};
    (setter.*option.set)(option);
    return;
  }
  std::fprintf(stderr, "Option not supported: %s\n", name.text());
}

void Uci::stopForOption() {
  const UciStatus old = stopRunningSearch();
  if (old == Searching || old == Pondering) {
    std::fprintf(stderr, "uci::setoption(): search still running? status=%i\n", old);
  }
}

}  // namespace quill
