#include "eval/weights.h"

#include <cassert>
#include <cstddef>

namespace quill {

namespace {

// clang-format off
// PawnSquare, by square from the pawn's own side (8th rank first, files a to h), centipawns.
constexpr SquareValues PawnSquareOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
    -12,   0,   8,  20,  20,   8,   0, -12,
    -12,   0,   8,  20,  20,   8,   0, -12,
    -12,   0,   8,  20,  20,   8,   0, -12,
    -12,   0,   8,  20,  20,   8,   0, -12,
    -12,  -4,   4,  12,  12,   4,  -4, -12,
    -12,  -4,   0,   8,   8,   0,  -4, -12,
      0,   0,   0,   0,   0,   0,   0,   0,
};
constexpr SquareValues PawnSquareEndgame = {
      0,   0,   0,   0,   0,   0,   0,   0,
     28,  24,  18,  10,  10,  18,  24,  28,
     24,  20,  14,   6,   6,  14,  20,  24,
     20,  16,  10,   2,   2,  10,  16,  20,
     16,  12,   6,   0,   0,   6,  12,  16,
      8,   8,   2,   0,   0,   2,   8,   8,
      8,   8,   2,   0,   0,   2,   8,   8,
      0,   0,   0,   0,   0,   0,   0,   0,
};

// IsolatedPawn: no own pawn on the files beside it, no enemy pawn ahead. Same order and unit.
constexpr SquareValues IsolatedPawnOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
    -16,  -8,  -8,  -8,  -8,  -8,  -8, -16,
    -16, -12,  -8, -12, -12,  -8, -12, -16,
    -16, -12, -12, -16, -16, -12, -12, -16,
    -16, -16, -16, -20, -20, -16, -16, -16,
    -16, -16, -16, -20, -20, -16, -16, -16,
    -16, -12, -16, -20, -20, -16, -12, -16,
      0,   0,   0,   0,   0,   0,   0,   0,
};
constexpr SquareValues IsolatedPawnEndgame = {
      0,   0,   0,   0,   0,   0,   0,   0,
    -32, -24, -24, -24, -24, -24, -24, -32,
    -32, -24, -24, -24, -24, -24, -24, -32,
    -32, -24, -24, -24, -24, -24, -24, -32,
    -32, -24, -24, -24, -24, -24, -24, -32,
    -32, -24, -24, -24, -24, -24, -24, -32,
    -32, -24, -24, -24, -24, -24, -24, -32,
      0,   0,   0,   0,   0,   0,   0,   0,
};

// WeakPawn: not isolated, but undefended, no enemy pawn ahead; not symmetric. Same order and unit.
constexpr SquareValues WeakPawnOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8, -12, -12,  -8,  -8,  -8,
    -16, -12, -16, -16, -12,  -8,  -8,  -8,
     -8, -12, -16, -16, -12,  -8,  -8,  -8,
     -8, -12, -16, -16, -12,  -8,  -8,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
};
constexpr SquareValues WeakPawnEndgame = {
      0,   0,   0,   0,   0,   0,   0,   0,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
     -8,  -8,  -8,  -8,  -8,  -8,  -8,  -8,
      0,   0,   0,   0,   0,   0,   0,   0,
};

// PassedPawn, before its weights. Same order and unit.
constexpr SquareValues PassedPawnOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
     90,  90,  90,  90,  90,  90,  90,  90,
     60,  60,  60,  60,  60,  60,  60,  60,
     24,  24,  24,  24,  24,  24,  24,  24,
      4,   4,   4,   4,   4,   4,   4,   4,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
};
constexpr SquareValues PassedPawnEndgame = {
      0,   0,   0,   0,   0,   0,   0,   0,
    148, 144, 140, 140, 140, 140, 140, 140,
    112, 104,  96,  96,  96,  96,  96,  96,
     72,  64,  56,  56,  56,  56,  56,  56,
     36,  30,  24,  24,  24,  24,  24,  24,
      4,   4,   4,   4,   4,   4,   4,   4,
      4,   4,   4,   4,   4,   4,   4,   4,
      0,   0,   0,   0,   0,   0,   0,   0,
};

// CandidatePawn: one step short of a passed pawn, before its weights. Same order and unit.
constexpr SquareValues CandidatePawnOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
     45,  45,  45,  45,  45,  45,  45,  45,
     18,  18,  18,  18,  18,  18,  18,  18,
      3,   3,   3,   3,   3,   3,   3,   3,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
};
constexpr SquareValues CandidatePawnEndgame = {
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
     64,  64,  64,  64,  64,  64,  64,  64,
     32,  32,  32,  32,  32,  32,  32,  32,
      8,   8,   8,   8,   8,   8,   8,   8,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
};

// KnightSquare. Same order and unit.
constexpr SquareValues KnightSquareOpening = {
    -64, -32, -32, -32, -32, -32, -32, -64,
    -20,  -8,   0,   4,   4,   0,  -8, -20,
    -16,   8,  24,  32,  32,  24,   8, -16,
    -12,   0,  16,  24,  24,  16,   0, -12,
    -12,  -4,   8,  16,  16,   8,  -4, -12,
    -24,  -8,   0,   4,   4,   0,  -8, -24,
    -28, -16,  -8,  -4,  -4,  -8, -16, -28,
    -64, -24, -18, -16, -16, -18, -24, -64,
};
constexpr SquareValues KnightSquareEndgame = {
    -72, -44, -36, -28, -28, -36, -44, -72,
    -40, -32, -20, -12, -12, -20, -32, -40,
    -32,  -4,   4,  12,  12,   4,  -4, -32,
     -8,   4,  12,  16,  16,  12,   4,  -8,
     -8,   4,  12,  16,  16,  12,   4,  -8,
    -24,  -4,   0,   8,   8,   0,  -4, -24,
    -32, -24, -20, -16, -16, -20, -24, -32,
    -72, -44, -36, -28, -28, -36, -44, -72,
};

// BishopSquare. Same order and unit.
constexpr SquareValues BishopSquareOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   0,   0,   0,   0,   0,   0,
      0,   0,   4,  12,  12,   4,   0,   0,
      0,   0,   4,   8,   8,   4,   0,   0,
      0,   0,   0,   4,   4,   0,   0,   0,
      0,   0,   2,  -4,  -4,   2,   0,   0,
    -16,   0,  -6,  -8,  -8,  -6,   0, -16,
     -4,  -4,  -4, -12, -12,  -4,  -4,  -4,
};
constexpr SquareValues BishopSquareEndgame = {
    -20, -12, -12, -12, -12, -12, -12, -20,
    -16,  -8,  -8,  -4,  -4,  -8,  -8, -16,
     -4,   0,   0,   2,   2,   0,   0,  -4,
      0,   0,   2,   4,   4,   2,   0,   0,
      0,   0,   2,   4,   4,   2,   0,   0,
     -4,   0,   0,   2,   2,   0,   0,  -4,
    -16,  -8,  -8,  -4,  -4,  -8,  -8, -16,
    -20, -12, -12, -12, -12, -12, -12, -20,
};

// QueenSquare. Same order and unit.
constexpr SquareValues QueenSquareOpening = {
      0,   0,   0,   0,   0,   0,   0,   0,
     -4,  -4,   0,   0,   0,   0,  -4,  -4,
     -4,  -4,   0,   0,   0,   0,  -4,  -4,
     -4,  -4,   0,   0,   0,   0,  -4,  -4,
     -4,  -4,   0,   0,   0,   0,  -4,  -4,
     -4,  -4,   0,   4,   4,   0,  -4,  -4,
     -4,  -4,   2,   4,   4,   2,  -4,  -4,
      0,   0,   0,   0,   0,   0,   0,   0,
};
constexpr SquareValues QueenSquareEndgame = {
    -16, -12, -10,  -8,  -8, -10, -12, -16,
    -14, -10,  -8,  -6,  -6,  -8, -10, -14,
    -12,  -4,   2,   4,   4,   2,  -4, -12,
    -10,   2,   8,  12,  12,   8,   2, -10,
    -10,   2,   8,  12,  12,   8,   2, -10,
    -12,  -4,   2,   2,   2,   2,  -4, -12,
    -14, -10,  -8,  -6,  -6,  -8, -10, -14,
    -16, -16, -16, -10, -10, -16, -16, -16,
};

// Mobility, by number of squares; before its weights, centipawns.
constexpr std::array<int, 9> KnightMobilityOpening = {-60, -38, -21,  -8, -1, 6, 8, 9, 10};
constexpr std::array<int, 9> KnightMobilityEndgame = {-68, -44, -26, -13, -4, 3, 4, 5,  6};
constexpr std::array<int, 14> BishopMobilityOpening = {
    -27, -18, -10, -2, 6, 11, 13, 15, 17, 19, 27, 31, 40, 40};
constexpr std::array<int, 14> BishopMobilityEndgame = {
    -42, -27, -16, -7, 0,  5,  6,  7,  8,  8,  8,  8,  9,  9};
constexpr std::array<int, 15> RookMobilityOpening = {
     -8,  -8,  -8,  -8, -4,  0,  4, 8, 12, 16, 20, 21, 22, 23, 24};
constexpr std::array<int, 15> RookMobilityEndgame = {
    -35, -27, -20, -14, -9, -5, -1, 3,  7, 10, 10, 10, 10, 11, 11};
constexpr std::array<int, 32> QueenMobilityOpening = {
     -6,  -4,  -2,   0,   2,  4,  6,  8, 10, 12, 13, 14, 15, 16, 17, 18,
     19,  20,  21,  22,  23, 24, 24, 25, 25, 26, 26, 27, 27, 28, 28, 29};
constexpr std::array<int, 32> QueenMobilityEndgame = {
    -56, -42, -30, -20, -12, -6, -2,  2,  5,  8, 10, 12, 14, 16, 18, 20,
     22,  24,  26,  28,  30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41};
// clang-format on

// Packs an opening and an endgame table into one, each scaled by its weight.
template <std::size_t Size>
std::array<ScorePair, Size> packed(const std::array<int, Size>& opening,
                                   const std::array<int, Size>& endgame,
                                   int openingWeight = EvalWeightOne,
                                   int endgameWeight = EvalWeightOne) {
  std::array<ScorePair, Size> table;
  for (std::size_t i = 0; i < Size; ++i)
    table[i] = makePair((opening[i] * openingWeight) >> 10, (endgame[i] * endgameWeight) >> 10);
  return table;
}

}  // namespace

EvalTables::EvalTables() {
  weights.fill(EvalWeightOne);
  buildEvalTables(*this);
}

void buildEvalTables(EvalTables& tables) {
  tables.pawnSquare = packed(PawnSquareOpening, PawnSquareEndgame);
  tables.isolatedPawn = packed(IsolatedPawnOpening, IsolatedPawnEndgame);
  tables.weakPawn = packed(WeakPawnOpening, WeakPawnEndgame);
  tables.knightSquare = packed(KnightSquareOpening, KnightSquareEndgame);
  tables.bishopSquare = packed(BishopSquareOpening, BishopSquareEndgame);
  tables.queenSquare = packed(QueenSquareOpening, QueenSquareEndgame);

  const int passedOpening = tables.weights[PassedPawnsOpening];
  const int passedEndgame = tables.weights[PassedPawnsEndgame];
  tables.passedPawn = packed(PassedPawnOpening, PassedPawnEndgame, passedOpening, passedEndgame);
  tables.candidatePawn =
      packed(CandidatePawnOpening, CandidatePawnEndgame, passedOpening, passedEndgame);

  const int opening = tables.weights[MobilityOpening];
  const int endgame = tables.weights[MobilityEndgame];
  tables.knightMobility = packed(KnightMobilityOpening, KnightMobilityEndgame, opening, endgame);
  tables.bishopMobility = packed(BishopMobilityOpening, BishopMobilityEndgame, opening, endgame);
  tables.rookMobility = packed(RookMobilityOpening, RookMobilityEndgame, opening, endgame);
  tables.queenMobility = packed(QueenMobilityOpening, QueenMobilityEndgame, opening, endgame);
}

void setEvalWeight(EvalTables& tables, int index, int value) {
  assert(index >= 0 && index < EvalWeightCount);
  tables.weights[static_cast<std::size_t>(index)] = value;
  buildEvalTables(tables);
}

}  // namespace quill
