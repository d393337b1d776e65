// The protocol's "info" lines: their text, and the throttle that keeps them from flooding a GUI.
//
// Both halves are free of threads and streams: the text is made from a snapshot of the search, and
// the throttle is told the time.
#pragma once

#include <cstdint>
#include <string>

#include "board/notation.h"
#include "search/root_moves.h"

namespace quill {

struct SearchState;

// What the lines of one moment say about the search as a whole.
struct SearchSnapshot {
  std::uint32_t elapsed;    // ms since the search started
  std::uint64_t nodes;      // of all threads
  std::uint64_t ttFilled;   // table entries that this search has filled
  std::uint64_t ttEntries;  // the table's size, not 0
  int selDepth;             // of the master

  // Of the search that runs, taken the given time after its start. Threads: the master thread.
  static SearchSnapshot of(const SearchState& state, std::uint32_t elapsed);
};

// Appends time, nodes, speed (once it means something, or in the final block) and the table's fill.
void appendStatsTail(std::string& text, const SearchSnapshot& snapshot, bool isFinal = false);

// The move about to be searched at the root; moveIndex counts from 0.
std::string currentMoveLine(int depth, int moveIndex, Move move, const SearchSnapshot& snapshot,
                            PromotionCase promotions = PromotionCase::Upper);

struct PvBlockOptions {
  int lines;        // wanted, at least 1 and at most the number of root moves (but 1 without any)
  int filterDepth;  // with several lines, those of lesser depth are left out
  bool sendPv;      // also the moves of each line
  PromotionCase promotions = PromotionCase::Upper;
  // The last block of a search: the best line comes last, and every line is told in full.
  bool isFinal = false;
};

// One line for each of the best root moves, in order.
std::string pvBlock(const RootMoveList& rootMoves, const PvBlockOptions& options,
                    const SearchSnapshot& snapshot);

// The line of a move that was found without a search, such as the book's; the score is in
// centipawns, side to move's view.
std::string unsearchedLine(int score, Move move, PromotionCase promotions);

// Decides which reports become lines: all while the best move and its score are young, one in 100
// ms later. Threads: the master thread; reset between searches.
class InfoThrottle {
 public:
  void reset() { *this = InfoThrottle(); }

  // Whether to announce the root move now; if so, the next 100 ms begin.
  bool admitsCurrentMove(int moveIndex, std::uint32_t elapsed);
  // Whether to show the principal variations now.
  bool admitsPv(int depth, int score, Move move, std::uint32_t elapsed);
  // To be told after they were shown.
  void pvShown(int depth, int score, Move move);

 private:
  std::uint32_t nextInfoTime_ = 0;  // ms since the search's start
  bool pvRepeat_ = false;           // the last reportPv repeated an old best move and score
  int lastDepth_ = 0;               // where the remembered move and score first appeared
  int lastScore_ = 0;
  Move lastMove_ = NoMove;
};

}  // namespace quill
