#include "uci/profile.h"

#include "search/search_state.h"
#include "uci/names.h"

namespace quill {

constexpr Profile ClassicProfile = {
    .name = "classic",
    .promotions = PromotionCase::Upper,
    .padsOptions = true,
    .offersMoreOptions = false,
    .answersOnce = false,
    .endsWithLine = false,
    .tellsRefusals = false,
    .multiPvMargin = DefaultMultiPvMargin,
    .obeysNamedLimits = false,
    .waitsForStop = false,
    .sparesBook = false,
    .readsNegativeAsZero = false,
    .time = &ClassicTime,
    .reserve = 3000,
    .overhead = 0,
    .dropsCarriageReturn = false,
    .knowsDebug = false,
    .newGameClears = false,
    .errorLog = ErrorLogName,
    .seeksBook = false,
    .tellsMove = false,
    .hintsAtHelp = false,
};

constexpr Profile ModernProfile = {
    .name = "modern",
    .promotions = PromotionCase::Lower,
    .padsOptions = false,
    .offersMoreOptions = true,
    .answersOnce = true,
    .endsWithLine = true,
    .tellsRefusals = true,
    .multiPvMargin = 0,
    .obeysNamedLimits = true,
    .waitsForStop = true,
    .sparesBook = true,
    .readsNegativeAsZero = true,
    .time = &ModernTime,
    .reserve = 0,
    .overhead = 30,
    .dropsCarriageReturn = true,
    .knowsDebug = true,
    .newGameClears = true,
    .errorLog = "stderr",
    .seeksBook = true,
    .tellsMove = true,
    .hintsAtHelp = true,
};

const Profile* findProfile(std::string_view name) {
  for (const Profile* profile : {&ClassicProfile, &ModernProfile}) {
    if (name == profile->name) return profile;
  }
  return nullptr;
}

}  // namespace quill
