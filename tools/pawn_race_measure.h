// How often the evaluation's pawn race judges king and pawn against king correctly.
#pragma once

#include "board/board.h"
#include "eval/evaluate.h"
#include "eval/pawns.h"
#include "eval/pawn_race.h"
#include "pawn_ending_table.h"

namespace quill {

struct RaceTally {
  int positions = 0;
  int falseWins = 0;   // drawn, but the race sees a sure promotion
  int falseDraws = 0;  // won, but the race sees none

  double rightShare() const {
    return 1.0 - static_cast<double>(falseWins + falseDraws) / positions;
  }
};

struct RaceMeasure {
  RaceTally bySideToMove[2];  // White has the pawn
};

// Requires: initTables and initZobrist were called.
inline RaceMeasure measurePawnRace() {
  const PawnEndingTable table;
  const EvalTables weights;
  Board board;
  Evaluator evaluator(board, weights);
  RaceMeasure measure;
  PawnEndingTable::forEachLegal([&](const PawnEnding& e) {
    board.clear();
    board.add(White, King, e.whiteKing);
    board.add(Black, King, e.blackKing);
    board.add(White, Pawn, e.pawn);
    board.stm = e.stm;
    pawnStructure(evaluator);

    RaceTally& tally = measure.bySideToMove[e.stm];
    const bool seesWin = pawnRace(evaluator) > 0;
    ++tally.positions;
    if (seesWin && !table.isWon(e)) ++tally.falseWins;
    if (!seesWin && table.isWon(e)) ++tally.falseDraws;
  });
  return measure;
}

}  // namespace quill
