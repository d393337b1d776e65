#include "book/book_selector.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "shell/settings.h"

namespace quill {

namespace {

// Labels of the exclusion bits, from bit 0 up.
constexpr std::array<const char*, 5> ExclusionLabels = {"<games", "<elo", "<score", "<games%",
                                                        "<elo+-"};

constexpr char Dashes[] =
    "---------------------------------------------------------------------------------------\n";

double ratio(double part, double whole) { return whole != 0 ? part / whole : 0; }

// The results of one candidate or of all together.
struct Record {
  double wins = 0;
  double draws = 0;
  double losses = 0;
  double strength = 0;

  Record() = default;
  explicit Record(const BookEntry& entry)
      : wins(entry.wins), draws(entry.draws), losses(entry.losses), strength(entry.strength) {}

  double games() const { return wins + draws + losses; }
  double score() const { return ratio(2 * wins + draws, 2 * games()); }
  // Undoes the book's 2^((elo - 2400) / 70).
  double elo() const { return strength != 0 ? std::log(strength) * 70 / std::log(2.0) + 2400 : 0; }
  // Standard error of the score.
  double scoreError() const {
    if (games() == 0) return 0;
    // The variance of a single result; rounding may take it slightly below 0.
    const double variance = score() * (1 - score()) - 0.25 * draws / games();
    return std::sqrt(std::max(variance, 0.0)) / std::sqrt(games());
  }
  int printedGames() const {
    return static_cast<int>(std::min<double>(games(), std::numeric_limits<int>::max()));
  }
};

// Divides every value by their sum; a sum of 0 leaves them as they are.
template <typename Values>
void normalise(Values& values) {
  double sum = 0;
  for (const double value : values) sum += value;
  if (sum == 0) return;
  for (double& value : values) value /= sum;
}

using Column = std::array<double, MaxBookCandidates>;

}  // namespace

BookSelector::BookSelector(Book& book, std::uint32_t seed) : book_(book), generator_(seed) {}

void BookSelector::applySettings(const Settings& settings) {
  settings.dump();
  // What the settings do not name keeps its default.
  criteria_ = {};
  const auto number = [&settings](const char* key, auto& value) {
    if (const char* text = settings.getString(key, nullptr)) value = parseInt(text);
  };
  const auto percent = [&settings](const char* key, double& value) {
    if (const char* text = settings.getString(key, nullptr)) value = parseInt(text) / 100.0;
  };
  number("book.play.maxply", criteria_.maxPly);
  number("book.play.mingames", criteria_.minGames);
  percent("book.play.mingamepct", criteria_.minGamesShare);
  number("book.play.minelo", criteria_.minElo);
  number("book.play.maxelodelta", criteria_.maxEloDelta);
  percent("book.play.minscorew", criteria_.minScoreWhite);
  percent("book.play.minscoreb", criteria_.minScoreBlack);
  if (const char* text = settings.getString("book.play.maxscoredelta", nullptr))
    criteria_.maxScoreDelta = std::strtod(text, nullptr) / 100;
  percent("book.play.gameweight", criteria_.gameWeight);
  percent("book.play.eloweight", criteria_.eloWeight);
  percent("book.play.scoreweight", criteria_.scoreWeight);
  percent("book.play.winweight", criteria_.winWeight);
  percent("book.play.drawweight", criteria_.drawWeight);
  percent("book.play.minweight", criteria_.minWeight);
  percent("book.play.random", criteria_.random);
}

std::span<const BookStatistics> BookSelector::choose(int n, bool black) {
  assert(n >= 1 && n <= static_cast<int>(book_.candidates().size()));
  count_ = n;
  table_.fill({});
  excludeByOwnValues(black);
  excludeByComparison();
  computeShares();
  computePicks();
  return {table_.data(), static_cast<std::size_t>(n)};
}

void BookSelector::excludeByOwnValues(bool black) {
  const double minScore = black ? criteria_.minScoreBlack : criteria_.minScoreWhite;
  for (int i = 0; i < count_; ++i) {
    const Record record(book_.candidates()[i]);
    BookStatistics& row = table_[i];
    row.score = record.score();
    row.elo = record.elo();
    if (criteria_.minGames > record.games()) row.excluded |= TooFewGames;
    if (criteria_.minElo > row.elo && book_.hasElo()) row.excluded |= TooLowElo;
    // A strength that no float can hold would leave nothing for the other moves.
    if (!std::isfinite(record.strength)) row.excluded |= TooLowElo;
    if (minScore > row.score) row.excluded |= TooLowScore;
  }
}

// Compares every candidate, excluded or not, with the best of those that are not excluded so far.
void BookSelector::excludeByComparison() {
  double maxGames = 0;
  double maxElo = 0;
  for (int i = 0; i < count_; ++i) {
    if (table_[i].excluded != 0) continue;
    maxGames = std::max(maxGames, Record(book_.candidates()[i]).games());
    maxElo = std::max(maxElo, table_[i].elo);
  }
  const double minGames = std::trunc(maxGames * criteria_.minGamesShare);
  for (int i = 0; i < count_; ++i) {
    BookStatistics& row = table_[i];
    if (Record(book_.candidates()[i]).games() < minGames) row.excluded |= TooSmallGamesShare;
    if (book_.hasElo() && row.elo < maxElo - criteria_.maxEloDelta) {
      row.excluded |= TooFarBelowBestElo;
    }
  }
}

void BookSelector::computeShares() {
  double bestScore = 0;
  for (const BookStatistics& row : table_) {
    if (row.excluded == 0) bestScore = std::max(bestScore, row.score);
  }
  Column games{};
  Column elo{};
  Column score{};
  for (int i = 0; i < count_; ++i) {
    if (table_[i].excluded != 0) continue;
    const Record record(book_.candidates()[i]);
    games[i] = record.games();
    elo[i] = book_.hasElo() ? record.strength : 0;
    // With a maxScoreDelta of 0 no score counts, not even the best one.
    const double share = criteria_.maxScoreDelta != 0
                             ? 1 - (bestScore - table_[i].score) / criteria_.maxScoreDelta
                             : 0;
    score[i] = share > 0 ? share : 0;
  }
  normalise(games);
  if (criteria_.gameWeight < 0) {
    for (int i = 0; i < count_; ++i) {
      // A little more than 1 keeps the share of a single move above 0.
      if (table_[i].excluded == 0) games[i] = 1.00001 - games[i];
    }
    normalise(games);
  }
  normalise(elo);
  normalise(score);
  for (int i = 0; i < count_; ++i) {
    table_[i].gamesShare = games[i];
    table_[i].eloShare = elo[i];
    table_[i].scoreShare = score[i];
  }
}

void BookSelector::computePicks() {
  Column weights{};
  for (int i = 0; i < count_; ++i) {
    const BookStatistics& row = table_[i];
    if (row.excluded != 0) continue;
    weights[i] = criteria_.gameWeight * row.gamesShare + criteria_.scoreWeight * row.scoreShare;
    if (book_.hasElo()) weights[i] += criteria_.eloWeight * row.eloShare;
  }
  normalise(weights);
  for (int i = 0; i < count_; ++i) table_[i].combined = weights[i];

  const auto used = std::span(weights).first(static_cast<std::size_t>(count_));
  const double leastWeight = criteria_.minWeight * *std::max_element(used.begin(), used.end());
  for (double& weight : used) {
    if (weight < leastWeight) weight = 0;
  }
  normalise(weights);

  // The first of several equal ones.
  const auto best = std::max_element(used.begin(), used.end()) - used.begin();
  for (int i = 0; i < count_; ++i) {
    table_[i].pick =
        i == best ? 1 - (1 - weights[i]) * criteria_.random : weights[i] * criteria_.random;
  }
}

std::optional<BookEntry> BookSelector::probe(const char* fen) {
  const std::optional<BookPosition> position = Book::bookKey(fen);
  return position ? probe(*position) : std::nullopt;
}

std::optional<BookEntry> BookSelector::probe(const BookPosition& position) {
  if (criteria_.maxPly != 0 && criteria_.maxPly <= position.ply) return std::nullopt;
  const int n = book_.loadCandidates(position);
  if (n == 0) return std::nullopt;
  const std::span<const BookStatistics> rows = choose(n, position.black);
  double rest = static_cast<double>(generator_.next64()) * 0x1p-64;
  for (int i = 0; i < n; ++i) {
    rest -= rows[i].pick;
    if (rest <= 0) return book_.candidates()[i];
  }
  return std::nullopt;
}

void BookSelector::printCandidates(const char* fen, std::FILE* out) {
  // A text that is no position has the key 0, which is in no book.
  printCandidates(Book::bookKey(fen).value_or(BookPosition{0, false, 0}), out);
}

void BookSelector::printCandidates(const BookPosition& position, std::FILE* out) {
  const int n = book_.loadCandidates(position);
  if (n == 0) {
    std::fputs("position not in book\n", out);
    return;
  }
  printCriteria(out);
  const std::span<const BookStatistics> rows = choose(n, position.black);
  std::fputs(
      "\n pick   move    elo    games  score    +/-   win%   drw%   elo%  game%  score%  combi%\n",
      out);
  std::fputs(Dashes, out);
  for (int i = 0; i < n; ++i) {
    const BookEntry& entry = book_.candidates()[i];
    const BookStatistics& row = rows[i];
    const Record record(entry);
    std::fprintf(out, "%5.1f%%  %4s %6.0f %8i", row.pick * 100, Book::moveText(entry).data(),
                 row.elo, record.printedGames());
    std::fprintf(out, " %6.2f %6.2f %6.1f %6.1f", row.score * 100, record.scoreError() * 100,
                 ratio(record.wins, record.games()) * 100,
                 ratio(record.draws, record.games()) * 100);
    std::fprintf(out, " %6.1f %6.1f %7.2f %7.2f", row.eloShare * 100, row.gamesShare * 100,
                 row.scoreShare * 100, row.combined * 100);
    for (std::size_t bit = 0; bit < ExclusionLabels.size(); ++bit) {
      if ((row.excluded >> bit) & 1) std::fprintf(out, " %s", ExclusionLabels[bit]);
    }
    std::fputc('\n', out);
  }
  if (n > 1) printTotals(out);
}

void BookSelector::printCriteria(std::FILE* out) const {
  const BookCriteria& c = criteria_;
  std::fprintf(out,
               "criteria: maxply=%i, mingames=%i, mingamepct=%1.0f, minelo=%1.0f, "
               "maxelodelta=%1.0f, minscorew=%1.0f, minscoreb=%1.0f, maxscoredelta=%1.0f\n",
               c.maxPly, c.minGames, c.minGamesShare * 100, c.minElo, c.maxEloDelta,
               c.minScoreWhite * 100, c.minScoreBlack * 100, c.maxScoreDelta * 100);
  std::fprintf(out,
               "weights : gameweight=%1.0f, eloweight=%1.0f, scoreweight=%1.0f, winweight=%1.0f, "
               "drawweight=%1.0f, minweight=%1.0f, random=%1.0f\n",
               c.gameWeight * 100, c.eloWeight * 100, c.scoreWeight * 100, c.winWeight * 100,
               c.drawWeight * 100, c.minWeight * 100, c.random * 100);
}

void BookSelector::printTotals(std::FILE* out) const {
  Record total;
  for (const BookEntry& entry : book_.candidates()) {
    const Record record(entry);
    total.wins += record.wins;
    total.draws += record.draws;
    total.losses += record.losses;
    total.strength += record.strength;
  }
  std::fputs(Dashes, out);
  std::fprintf(out, "100.0%%       %6.0f %8i %6.1f %6.1f %6.2f %6.2f\n", total.elo(),
               total.printedGames(), total.score() * 100, total.scoreError() * 100,
               ratio(total.wins, total.games()) * 100, ratio(total.draws, total.games()) * 100);
}

}  // namespace quill
