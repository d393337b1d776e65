// The tuned tables of the evaluation, and the seven weights that options change.
//
// Square tables are indexed by the square as seen from the piece's own side, eighth rank first: see
// tableIndex. All values are centipawns unless a line says otherwise.
#pragma once

#include <array>

#include "board/codes.h"
#include "eval/score_pair.h"

namespace quill {

// What each weight scales.
enum EvalWeight : int {
  MobilityOpening,
  MobilityEndgame,
  PassedPawnsOpening,
  PassedPawnsEndgame,
  PawnStructureOpening,
  PawnStructureEndgame,
  KingAttack,
  EvalWeightCount
};

inline constexpr int EvalWeightOne = 1024;  // a weight of 100 percent

// The weights and the tables derived from them. One object is made at start-up and passed by
// reference to every Evaluator.
//
// Threads: all threads read it without locking; change a weight only while none evaluates.
struct EvalTables {
  using SquareTable = std::array<ScorePair, 64>;

  std::array<int, EvalWeightCount> weights;  // in 1/1024

  SquareTable pawnSquare;
  SquareTable isolatedPawn;
  SquareTable weakPawn;
  SquareTable passedPawn;     // weighted
  SquareTable candidatePawn;  // weighted
  SquareTable knightSquare;
  SquareTable bishopSquare;
  SquareTable queenSquare;
  std::array<ScorePair, 9> knightMobility;  // these four by number of squares, weighted
  std::array<ScorePair, 14> bishopMobility;
  std::array<ScorePair, 15> rookMobility;
  std::array<ScorePair, 32> queenMobility;

  // All weights at 100 percent, the tables built.
  EvalTables();
};

// Derives the tables from the constants and the weights.
void buildEvalTables(EvalTables& tables);

// Changes one weight, in 1/1024, and rebuilds the tables. Values already in the pawn hashes and
// evaluation caches keep the old weight until they are overwritten or cleared.
// Requires: an index of EvalWeight.
void setEvalWeight(EvalTables& tables, int index, int value);

// Where a square table holds the value of a piece of the colour on the square.
constexpr int tableIndex(Colour colour, Square square) {
  return colour == White ? square ^ 56 : square;
}

using SquareValues = std::array<int, 64>;

// clang-format off
// KingCentre, the king's place in the endgame, by square from the king's own side.
inline constexpr SquareValues KingCentre = {
    -28, -24, -22, -20, -20, -22, -24, -28,
    -18,  -8,  -2,   2,   2,  -2,  -8, -18,
     -6,   2,  16,  24,  24,  16,   2,  -6,
     -4,  16,  24,  40,  40,  24,  16,  -4,
     -4,   8,  20,  32,  32,  20,   8,  -4,
     -6,   2,   8,  12,  12,   8,   2,  -6,
    -18,  -8,  -2,   2,   2,  -2,  -8, -18,
    -28, -24, -22, -20, -20, -22, -24, -28,
};

// KingSquarePenalty, how exposed a king is, by square from its own side, in shelter points.
inline constexpr SquareValues KingSquarePenalty = {
     10,  10,  10,  10,  10,  10,  10,  10,
     10,  10,  10,  10,  10,  10,  10,  10,
     10,  10,  10,  10,  10,  10,  10,  10,
      8,   8,   9,  10,  10,   9,   8,   8,
      6,   6,   7,   9,   9,   7,   6,   6,
      4,   4,   6,   8,   8,   6,   4,   4,
      2,   1,   3,   4,   4,   3,   1,   2,
      1,   0,   3,   4,   4,   3,   0,   1,
};

// KbnCorner, how far the bare king is from a corner of the bishop's colour, by square a1 to h8, for
// a bishop on dark squares.
inline constexpr SquareValues KbnCorner = {
      0,   1,   2,   3,   4,   5,   7,   8,
      1,   3,   5,   7,   8,   9,   8,   7,
      2,   5,   8,  10,  11,  10,   9,   5,
      3,   7,  10,  12,  12,  11,   8,   4,
      4,   8,  11,  12,  12,  10,   7,   3,
      5,   9,  10,  11,  10,   8,   5,   2,
      7,   8,   9,   8,   7,   5,   3,   1,
      8,   7,   5,   4,   3,   2,   1,   0,
};

// EndgameKingWeight, by the opponent's material points: share of the endgame king's value, in 1/32.
inline constexpr int EndgameKingWeight[16] = {32, 32, 32, 32, 32, 32, 32, 32, 28, 24, 24, 20, 16, 16, 12, 12};

// StormPenalty, by the storming pawn's rank from its own side, in shelter points.
inline constexpr int StormPenalty[8] = {0, 0, 0, 1, 2, 2, 1, 0};

// The shelter that an own pawn gives, by its rank from its own side, in shelter points: on the next
// file towards the centre, and on the king's file or the one beyond it. The rearmost pawn counts.
inline constexpr int InnerShelter[8] = {0, 3, 2, 1, 0, 0, 0, 0};
inline constexpr int OuterShelter[8] = {0, 6, 5, 3, 2, 0, 0, 0};

// Dynamic passed-pawn bonus, by the pawn's rank from its own side, before weight and circumstances.
inline constexpr int PassedOpening[8] = {0,  0,  0,  8, 16, 24,  32, 0};
inline constexpr int PassedEndgame[8] = {0, 20, 20, 40, 64, 96, 128, 0};

// ScaleByPawns, by the pawns of the side ahead: share of the whole score, in 1/1024.
inline constexpr int ScaleByPawns[9] = {424, 704, 848, 986, 1024, 1024, 1024, 1024, 1024};
// clang-format on

}  // namespace quill
