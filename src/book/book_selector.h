// Chooses among the candidate moves of a book position: criteria exclude moves, weights turn the
// rest into probabilities, and one of them is drawn.
//
// A move is excluded when it was played too rarely, scored too badly or was played by too weak
// players. The others are weighted by a blend of their share of the games, their score and their
// strength, and those of little weight are cut. `random` ranges from the best move alone (0) to a
// choice in proportion to the weights (1).
//
// Threads: the input thread only.
#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>

#include "board/sfmt.h"
#include "book/book.h"

namespace quill {

class Settings;

// The fifteen "book.play." settings. What is percent in the settings is a fraction here.
struct BookCriteria {
  int maxPly = 0;               // no book moves at or after this ply; 0 = no limit
  int minGames = 2;             // games of a move
  double minGamesShare = 0.10;  // of the games of the most played admitted move
  double minElo = 2700;
  double maxEloDelta = 200;     // below the best admitted move's Elo
  double minScoreWhite = 0.50;  // score 0..1 when White is to move
  double minScoreBlack = 0.40;
  double maxScoreDelta = 0.05;  // a score this far below the best counts nothing
  double gameWeight = 1.0;      // negative prefers rarely played moves
  double eloWeight = 1.0;
  double scoreWeight = 0.0;
  double winWeight = 0.0;   // shown only
  double drawWeight = 0.0;  // shown only
  double minWeight = 0.10;  // of the best weight; lesser weights are cut
  double random = 1.0;      // 1 = in proportion to the weights, 0 = always the best
};

// Why a candidate may not be played; a set of bits.
enum BookExclusion : std::uint32_t {
  TooFewGames = 1,         // "<games"
  TooLowElo = 2,           // "<elo", also for a rating too high to be held
  TooLowScore = 4,         // "<score"
  TooSmallGamesShare = 8,  // "<games%"
  TooFarBelowBestElo = 16  // "<elo+-"
};

// One row of the table that choose fills. All shares and scores are fractions.
struct BookStatistics {
  std::uint32_t excluded;  // BookExclusion bits
  double pick;             // final probability
  double gamesShare;
  double score;  // 0..1, the mover's view
  double scoreShare;
  double elo;  // 0 when the book has none
  double eloShare;
  double combined;  // blended weight, before those of little weight are cut
};

class BookSelector {
 public:
  // The seed is for the random draws. Requires: the book outlives the selector.
  BookSelector(Book& book, std::uint32_t seed);

  // Lists all settings on standard output, then takes the criteria from the "book.play." keys.
  void applySettings(const Settings& settings);

  // The statistics of the book's first n candidates, valid until the next call.
  // Requires: 1 <= n <= number of the book's candidates.
  std::span<const BookStatistics> choose(int n, bool black);

  // A move drawn for the position, none when the book has no move to play. Every call that gets as
  // far as the draw takes one number from the generator.
  std::optional<BookEntry> probe(const BookPosition& position);
  std::optional<BookEntry> probe(const char* fen);

  // Prints the criteria and the whole table for the position, or that it is not in the book.
  void printCandidates(const BookPosition& position, std::FILE* out = stdout);
  void printCandidates(const char* fen, std::FILE* out = stdout);

  const BookCriteria& criteria() const { return criteria_; }

 private:
  void excludeByOwnValues(bool black);
  void excludeByComparison();
  void computeShares();
  void computePicks();
  void printCriteria(std::FILE* out) const;
  void printTotals(std::FILE* out) const;

  Book& book_;
  Sfmt generator_;
  BookCriteria criteria_;
  std::array<BookStatistics, MaxBookCandidates> table_{};
  int count_ = 0;  // rows of the table in use
};

}  // namespace quill
