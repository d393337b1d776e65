// The two ways in which the engine speaks the protocol, and what they differ in: one field for each
// difference, read where the thing is done. docs/uci.md tells the reason of each.
#pragma once

#include <cstdint>
#include <string_view>

#include "board/notation.h"
#include "time/time_profile.h"

namespace quill {

struct Profile {
  std::string_view name;  // the value of the settings key "uci.profile"

  // Wording.
  PromotionCase promotions;
  bool padsOptions;        // announces them in columns
  bool offersMoreOptions;  // announces and takes the options that came later
  bool answersOnce;        // one "bestmove" for each "go", never again or without one
  bool endsWithLine;       // the last "info" line tells all of the move that is played
  bool tellsRefusals;      // refused input in an "info string", not on standard error alone
  int multiPvMargin;       // centipawns; what the option is until it is set

  // Limits.
  bool obeysNamedLimits;     // no limit of time beside those of the "go"; "mate", "searchmoves"
  bool waitsForStop;         // an infinite search answers only when it is told to
  bool sparesBook;           // the book is asked for a player's moves only
  bool readsNegativeAsZero;  // a clock below zero

  // Time.
  const TimeProfile* time;
  std::uint32_t reserve;   // ms of the clock that are never planned with
  std::uint32_t overhead;  // ms for each move that pass outside the engine, unless set

  // Housekeeping.
  bool dropsCarriageReturn;  // at the end of a line
  bool knowsDebug;           // the command "debug"
  bool newGameClears;        // table and caches are emptied by "ucinewgame"
  const char* errorLog;      // where standard error goes, unless set: a file or "stderr"
  bool seeksBook;            // beside the program and in the data folder too
  // At the console.
  bool tellsMove;    // a search says its move at the end
  bool hintsAtHelp;  // when a command is unknown
};

// The wording that the engine has always had, and the default.
extern const Profile ClassicProfile;
// For the clients and match managers of today.
extern const Profile ModernProfile;

// The profile of the name; none: a null pointer.
const Profile* findProfile(std::string_view name);

}  // namespace quill
