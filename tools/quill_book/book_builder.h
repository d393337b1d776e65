// Turns games into a book: counts the results of every move that was played in every position.
//
// There is one entry for each move of a position, so memory grows with the moves that differ, not
// with the number of games.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "board/board.h"
#include "quill_book/pgn_reader.h"

namespace quill {

struct BookOptions {
  int maxPly = 40;              // moves of each game that are counted, from its first position on
  std::uint64_t minGames = 1;   // moves played in fewer games are left out
  bool withElo = false;         // attach the average rating of the players who chose the move
  bool withUnfinished = false;  // count games without a known result, as draws
};

class BookBuilder {
 public:
  // The most moves of a game that fit on a Board's stacks, with some room to spare.
  static constexpr int MaxMaxPly = 1000;

  explicit BookBuilder(const BookOptions& options);

  // Plays the game and counts its moves. A game without a known result is played, but counted only
  // if the options say so.
  // On failure: why the game can't be used; none of its moves is counted.
  std::optional<PgnError> add(const PgnGame& game);

  // Writes the book; the file appears under its name only when it is complete.
  // On failure: false; no file of that name was made or changed.
  bool write(const std::string& path);

  std::uint64_t gamesCounted() const { return gamesCounted_; }
  // Counted or not.
  std::uint64_t gamesWithoutResult() const { return gamesWithoutResult_; }
  // Of the book last written.
  std::uint64_t positionsWritten() const { return positionsWritten_; }
  std::uint64_t movesWritten() const { return movesWritten_; }

 private:
  // A move of a position and its results, from the view of the side that played it.
  struct MoveCount {
    std::uint64_t key;
    std::uint64_t eloSum;  // over the rated games
    std::uint32_t rated;
    std::uint32_t wins;
    std::uint32_t draws;
    std::uint32_t losses;
    std::uint8_t from;  // squares in 0x88 form
    std::uint8_t to;

    std::uint64_t games() const { return std::uint64_t{wins} + draws + losses; }
    bool isSameMove(const MoveCount& other) const {
      return key == other.key && from == other.from && to == other.to;
    }
  };

  std::optional<PgnError> setUp(const PgnGame& game);
  MoveCount countOf(Move move, const PgnGame& game) const;
  void merge();
  void appendPosition(std::vector<MoveCount>::iterator first, std::vector<MoveCount>::iterator last,
                      std::string& out);

  BookOptions options_;
  Board start_;
  Board board_;
  std::vector<MoveCount> ofGame_;  // of the game being played
  // The first merged_ are sorted by position and move; those counted since follow.
  std::vector<MoveCount> counts_;
  std::size_t merged_ = 0;
  std::uint64_t gamesCounted_ = 0;
  std::uint64_t gamesWithoutResult_ = 0;
  std::uint64_t positionsWritten_ = 0;
  std::uint64_t movesWritten_ = 0;
};

}  // namespace quill
