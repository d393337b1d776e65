// Prints, by side to move, how often the pawn race judges king and pawn against king correctly.
#include <cstdio>

#include "board/zobrist.h"
#include "pawn_race_measure.h"

int main() {
  quill::initTables();
  quill::initZobrist();
  const quill::RaceMeasure measure = quill::measurePawnRace();
  for (const quill::Colour stm : {quill::White, quill::Black}) {
    const quill::RaceTally& tally = measure.bySideToMove[stm];
    std::printf("%s to move: %d positions, %d taken for won, %d taken for drawn, %.2f%% right\n",
                stm == quill::White ? "pawn's side" : "bare king  ", tally.positions,
                tally.falseWins, tally.falseDraws, 100.0 * tally.rightShare());
  }
  return 0;
}
