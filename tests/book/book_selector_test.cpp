#include "book/book_selector.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <map>

#include "shell/settings.h"
#include "support/book_file.h"

namespace quill::test {
namespace {

using testing::DoubleNear;
using testing::ElementsAre;
using testing::Pointwise;

constexpr char BlackFen[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR b KQkq - 0 1";

struct Games {
  const char* move;
  unsigned wins, draws, losses;
  unsigned elo = 0;
};

using SettingList = std::vector<std::pair<const char*, const char*>>;

// A book that holds the given moves of one position, and a selector with the given settings.
class BookChoice : public testing::Test {
 protected:
  void load(const std::vector<Games>& moves, bool withElo = false, const char* fen = StartFen) {
    fen_ = fen;
    std::vector<TestRecord> records;
    for (const Games& g : moves) {
      records.push_back({lookupKeyOf(fen), g.move, g.wins, g.draws, g.losses, g.elo});
    }
    ASSERT_TRUE(book.open(folder.write("book", bookBytes(records, withElo ? 6 : 2)).c_str()));
  }

  void set(const SettingList& list) {
    Settings settings;
    for (const auto& [key, value] : list) {
      settings.set(EngineString((std::string("book.play.") + key).c_str()), EngineString(value));
    }
    StreamCapture output(stdout);
    selector.applySettings(settings);
    dumped = output.text();
  }

  std::span<const BookStatistics> choose() {
    return selector.choose(book.loadCandidates(fen_),
                           std::string(fen_).find(" b ") != std::string::npos);
  }
  std::vector<double> picks() {
    std::vector<double> result;
    for (const BookStatistics& row : choose()) result.push_back(row.pick);
    return result;
  }
  std::vector<unsigned> exclusions() {
    std::vector<unsigned> result;
    for (const BookStatistics& row : choose()) result.push_back(row.excluded);
    return result;
  }
  std::string printed(const char* fen) {
    Capture out;
    selector.printCandidates(fen, out.stream());
    return out.text();
  }

  TestFolder folder;
  Book book;
  BookSelector selector{book, 5489};
  std::string dumped;
  const char* fen_ = StartFen;
};

auto near(std::vector<double> values) { return Pointwise(DoubleNear(1e-9), values); }

TEST_F(BookChoice, PicksFollowSharesAndWeights) {
  const std::vector<Games> sixThreeOne = {
      {"e2e4", 60, 0, 0}, {"d2d4", 30, 0, 0}, {"g1f3", 10, 0, 0}};
  const std::vector<Games> single = {{"e2e4", 60, 0, 0}};
  // Strengths 2^5, 2^6 and 2^6: shares 0.2, 0.4, 0.4; games 0.5, 0.3, 0.2.
  const std::vector<Games> rated = {
      {"e2e4", 50, 0, 0, 2750}, {"d2d4", 30, 0, 0, 2820}, {"g1f3", 20, 0, 0, 2820}};
  // Scores 0.6, 0.58, 0.5 below a delta of 5 %: raw shares 1, 0.6, 0.
  const std::vector<Games> scored = {{"e2e4", 60, 0, 40}, {"d2d4", 58, 0, 42}, {"g1f3", 50, 0, 50}};
  const std::vector<Games> twoBest = {{"g1f3", 20, 0, 0}, {"e2e4", 90, 0, 0}, {"d2d4", 90, 0, 0}};
  const double rarest = 3 * 1.00001 - 1;
  const struct {
    std::vector<Games> moves;
    SettingList settings;
    std::vector<double> picks;
  } cases[] = {
      {sixThreeOne, {}, {0.6, 0.3, 0.1}},
      {single, {}, {1}},
      {rated, {}, {0.35, 0.35, 0.3}},
      {rated, {{"eloweight", "300"}}, {1.1 / 4, 1.5 / 4, 1.4 / 4}},
      {scored, {{"gameweight", "0"}, {"scoreweight", "100"}}, {1 / 1.6, 0.6 / 1.6, 0}},
      {scored,
       {{"gameweight", "0"}, {"scoreweight", "100"}, {"maxscoredelta", "12.5"}},
       {1 / 2.04, 0.84 / 2.04, 0.2 / 2.04}},
      // A weight below 0 prefers the rare move, and leaves a single one its share.
      {sixThreeOne,
       {{"gameweight", "-100"}, {"minweight", "0"}},
       {0.40001 / rarest, 0.70001 / rarest, 0.90001 / rarest}},
      {single, {{"gameweight", "-100"}}, {1}},
      // Light moves are cut, and the rest shares their part.
      {twoBest, {{"minweight", "25"}}, {0, 0.5, 0.5}},
      // From proportion to the best move alone, the first of equals.
      {sixThreeOne, {{"random", "40"}}, {0.84, 0.12, 0.04}},
      {sixThreeOne, {{"random", "0"}}, {1, 0, 0}},
      {twoBest, {{"random", "0"}}, {0, 1, 0}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(&c - cases);
    load(c.moves, c.moves[0].elo != 0);
    set(c.settings);
    EXPECT_THAT(picks(), near(c.picks));
  }
}

TEST_F(BookChoice, EachCriterionSetsItsBit) {
  load({{"a2a3", 1, 0, 0, 2900},    // too few games
        {"b2b3", 100, 0, 0, 2600},  // Elo below the minimum
        {"c2c3", 49, 0, 51, 2900},  // score below 50 %
        {"d2d3", 9, 0, 0, 2900},    // 9 games, a tenth of 109 being 10
        {"e2e3", 109, 0, 0, 2700},  // sound
        {"f2f3", 100, 0, 0, 2905},  // sound; the best Elo
        {"g2g3", 10, 0, 0, 2704}},  // more than 200 below the best
       true);
  set({{"minelo", "2690"}});
  EXPECT_THAT(exclusions(), ElementsAre(1 | 8, 2 | 16, 4, 8, 16, 0, 16));
}

TEST_F(BookChoice, LimitsAreMeasuredOnSoundMovesAndAppliedToAll) {
  // The most played move scores too badly to set the limit, yet is held against it itself.
  load({{"a2a3", 100, 0, 900},
        {"b2b3", 59, 0, 0},
        {"c2c3", 5, 0, 0},
        {"d2d3", 4, 0, 0},
        {"e2e3", 1, 0, 3}});
  EXPECT_THAT(exclusions(), ElementsAre(4, 0, 0, 8, 4 | 8)) << "59 x 10 % is cut to 5 games";
}

TEST_F(BookChoice, MinimumScoreGoesByTheSideToMove) {
  const std::vector<Games> moves = {{"e7e5", 45, 0, 55}, {"e7e6", 40, 0, 60}, {"e7e7", 39, 0, 61}};
  load(moves, false, BlackFen);
  EXPECT_THAT(exclusions(), ElementsAre(0, 0, 4));
  load(moves, false, StartFen);
  EXPECT_THAT(exclusions(), ElementsAre(4, 4, 4));
}

TEST_F(BookChoice, WhenAllAreExcludedOnlyTheBlendLeavesAMove) {
  load({{"e2e4", 1, 0, 0}, {"d2d4", 1, 0, 0}});
  EXPECT_THAT(picks(), near({0, 0}));
  EXPECT_FALSE(selector.probe(StartFen));
  set({{"random", "40"}});
  EXPECT_THAT(picks(), near({0.6, 0}));
  set({{"random", "0"}});
  EXPECT_STREQ(Book::moveText(*selector.probe(StartFen)).data(), "e2e4");
}

TEST_F(BookChoice, MovesWithoutGamesHaveScoreZero) {
  load({{"e2e4", 0, 0, 0}, {"d2d4", 0, 0, 0}});
  set({{"mingames", "0"}, {"minscorew", "0"}});
  EXPECT_THAT(exclusions(), ElementsAre(0, 0));
  EXPECT_THAT(picks(), near({0, 0}));
  EXPECT_THAT(printed(StartFen), testing::HasSubstr("  e2e4      0        0   0.00   0.00"));
}

TEST_F(BookChoice, UnboundedNumbersStayHarmless) {
  load({{"e2e4", 65535, 65535, 65535, 65535}, {"d2d4", 2, 2, 2, 2800}}, true);
  EXPECT_THAT(exclusions(), ElementsAre(2, 0)) << "a rating that no float holds";
  EXPECT_THAT(picks(), near({0, 1}));
  EXPECT_THAT(printed(StartFen), testing::HasSubstr("  e2e4    inf   196605"));
  for (const char* number : {"nan", "inf", "-inf", "1e999", "0", "-5", "99999999999999999999"}) {
    set({{"scoreweight", "100"},
         {"maxscoredelta", number},
         {"mingames", number},
         {"maxply", number}});
    for (const double pick : picks()) EXPECT_TRUE(std::isfinite(pick)) << number;
    EXPECT_THAT(printed(StartFen), testing::HasSubstr("d2d4")) << number;
  }
}

TEST_F(BookChoice, ProbeEndsAtMaxPly) {
  constexpr char MoveTen[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 11";
  load({{"e2e4", 5, 0, 0}});
  EXPECT_TRUE(selector.probe(MoveTen));
  set({{"maxply", "21"}});
  EXPECT_TRUE(selector.probe(MoveTen));
  set({{"maxply", "20"}});
  EXPECT_FALSE(selector.probe(MoveTen));
  EXPECT_FALSE(selector.probe("8/8/8/8/8/8/8/8 w - - 0 1")) << "not in the book";
}

TEST_F(BookChoice, SettingsAreListedThenRead) {
  set({{"random", "30"}, {"mingames", "many"}, {"maxscoredelta", "2.5"}});
  EXPECT_EQ(dumped, "book.play.random=30\nbook.play.mingames=many\nbook.play.maxscoredelta=2.5\n");
  EXPECT_DOUBLE_EQ(selector.criteria().random, 0.3);
  EXPECT_EQ(selector.criteria().minGames, 0) << "no number reads as 0";
  EXPECT_DOUBLE_EQ(selector.criteria().maxScoreDelta, 0.025);
}

TEST_F(BookChoice, TableIsPrintedInFull) {
  load({{"e2e4", 50, 30, 20, 2750}, {"d2d4", 40, 20, 40, 2820}, {"a2a3", 0, 0, 1, 2400}}, true);
  EXPECT_EQ(
      printed(StartFen),
      "criteria: maxply=0, mingames=2, mingamepct=10, minelo=2700, maxelodelta=200, minscorew=50, "
      "minscoreb=40, maxscoredelta=5\n"
      "weights : gameweight=100, eloweight=100, scoreweight=0, winweight=0, drawweight=0, "
      "minweight=10, random=100\n"
      "\n"
      " pick   move    elo    games  score    +/-   win%   drw%   elo%  game%  score%  combi%\n"
      "---------------------------------------------------------------------------------------\n"
      " 41.7%  e2e4   2750      100  65.00   3.91   50.0   30.0   33.3   50.0  100.00   41.67\n"
      " 58.3%  d2d4   2820      100  50.00   4.47   40.0   20.0   66.7   50.0    0.00   58.33\n"
      "  0.0%  a2a3   2400        1   0.00   0.00    0.0    0.0    0.0    0.0    0.00    0.00 "
      "<games <elo <score <games% <elo+-\n"
      "---------------------------------------------------------------------------------------\n"
      "100.0%         2862      201   57.2    3.0  44.78  24.88\n");
  EXPECT_EQ(printed("8/8/8/8/8/8/8/8 w - -"), "position not in book\n");
  load({{"e2e4", 5, 0, 0}});
  EXPECT_THAT(printed(StartFen), testing::EndsWith("100.0  100.00  100.00\n")) << "no totals";
}

// Chi-square over the moves that can be drawn, against the column that the table shows.
TEST_F(BookChoice, DrawsFollowThePicks) {
  constexpr int Draws = 100000;
  load({{"a2a3", 400, 0, 0},
        {"e2e4", 1, 0, 1000},  // excluded
        {"b2b3", 200, 0, 0},
        {"c2c3", 90, 0, 0},
        {"d2d4", 60, 0, 0}});
  set({{"random", "85"}});
  const std::vector<double> expected = picks();
  std::map<std::string, int> seen;
  for (int i = 0; i < Draws; ++i) ++seen[Book::moveText(*selector.probe(StartFen)).data()];
  EXPECT_EQ(seen.count("e2e4"), 0u);
  double chiSquare = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    if (expected[i] == 0) continue;
    const int n = seen[Book::moveText(book.candidates()[i]).data()];
    chiSquare += std::pow(n - expected[i] * Draws, 2) / (expected[i] * Draws);
  }
  EXPECT_LT(chiSquare, 16.3) << "four cells: exceeded once in a thousand runs of chance";
}

}  // namespace
}  // namespace quill::test
