#include "eval/pawns.h"

#include "board/attacks.h"
#include "eval/evaluator.h"

namespace quill {

namespace {

constexpr ScorePair Beside = makePair(2, 0);
constexpr ScorePair Doubled = makePair(16, 32);
constexpr ScorePair DoubledButHeld = makePair(8, 20);
constexpr ScorePair IsolatedOpposed = makePair(2, 16);

constexpr int BareShelter = -16;  // shelter points of a king without any pawn near

constexpr Bitboard besideOf(Bitboard pawns) {
  return ((pawns << 1) & NotFileA) | ((pawns >> 1) & NotFileH);
}

// The value of one colour's pawns. Adds its passed pawns and a candidate to the entry.
template <Colour Us>
ScorePair sumPawns(const Board& board, const EvalTables& tables, PawnEntry& entry) {
  constexpr Colour Them = Us ^ 1;
  const Bitboard own = board.side[Us].bb[Pawn];
  const Bitboard enemy = board.side[Them].bb[Pawn];
  const Bitboard defendedSet = pawnSetAttacks(Us, own);
  const Bitboard besideSet = besideOf(own);

  ScorePair sum = 0;
  for (Bitboard pawns = own; pawns != 0;) {
    const Square square = popLowest(pawns);
    const int index = tableIndex(Us, square);
    const Bitboard ahead = frontSpan[Us][square];
    const Bitboard stoppers = enemy & passedSpan[Us][square];
    const Bitboard neighbours = own & adjacentFiles[square];
    const bool isDefended = contains(defendedSet, square);
    const bool isBeside = contains(besideSet, square);
    const bool isOpposed = (enemy & ahead) != 0;

    sum += tables.pawnSquare[index];
    if (isBeside) sum += Beside;

    if ((own & frontSpan[Them][square]) != 0) {
      sum -= Doubled;
      if (isDefended || isBeside)
        sum += DoubledButHeld;
      else if (isOpposed && (stoppers & ~ahead) == 0)
        sum -= Doubled;
    }

    if (stoppers == 0) {
      if ((own & ahead) == 0) {
        sum += tables.passedPawn[index];
        entry.passed |= bit(square);
      }
    } else if (!moreThanOne(stoppers) && !isOpposed && (neighbours & kingAttacks[square]) != 0) {
      entry.side[Us].candidate = 1;
      if (relativeRank(Us, square) >= 3) sum += tables.candidatePawn[index];
    }

    if (!isDefended) {
      if (!isOpposed)
        sum += neighbours != 0 ? tables.weakPawn[index] : tables.isolatedPawn[index];
      else if (neighbours == 0)
        sum -= IsolatedOpposed;
    }
  }
  return sum;
}

// The value, by rank, of the own pawn on the file that is nearest to the back rank; 0 without one.
template <Colour Us>
int shelterOnFile(Bitboard own, int file, const int (&byRank)[8]) {
  if (file < 0 || file > 7) return 0;
  const Bitboard pawns = own & fileMask(file);
  if (pawns == 0) return 0;
  const Square nearest = Us == White ? lowestSquare(pawns) : 63 - std::countl_zero(pawns);
  return byRank[relativeRank(Us, nearest)];
}

template <Colour Us>
int shelterFor(const Board& board, Square square) {
  constexpr Colour Them = Us ^ 1;
  // Enemy pawns on their own second and third rank do not storm yet.
  constexpr Bitboard StormRanks = relativeRankMask(Us, 1) | relativeRankMask(Us, 2) |
                                  relativeRankMask(Us, 3) | relativeRankMask(Us, 4);
  const Bitboard own = board.side[Us].bb[Pawn];

  int value = BareShelter;
  for (Bitboard storm = board.side[Them].bb[Pawn] & passedSpan[Us][square] & StormRanks;
       storm != 0;) {
    const Square pawn = popLowest(storm);
    value -= StormPenalty[relativeRank(Them, pawn)];
    const bool isBlocked = (shiftForward(Them, bit(pawn)) & own) != 0;
    if (isBlocked && (pawnAttacks[Them][pawn] & own) == 0) value += 1;
  }

  const int file = fileOf(square);
  const int towardsCentre = file < 4 ? 1 : -1;
  value += shelterOnFile<Us>(own, file + towardsCentre, InnerShelter);
  value += shelterOnFile<Us>(own, file, OuterShelter);
  value += shelterOnFile<Us>(own, file - towardsCentre, OuterShelter);
  return value;
}

template <Colour Us>
void fillSide(const Board& board, const EvalTables& tables, PawnEntry& entry) {
  const ScorePair sum = sumPawns<Us>(board, tables, entry);
  const int opening = openingOf(sum) * tables.weights[PawnStructureOpening];
  const int endgame = endgameOf(sum) * tables.weights[PawnStructureEndgame];
  PawnEntry::SideValues& side = entry.side[Us];
  side.opening = static_cast<std::int16_t>(opening >> 10);
  side.endgame = static_cast<std::int16_t>(endgame >> 10);
  const auto shelter = [&board](Square square) {
    return static_cast<std::int8_t>(shelterFor<Us>(board, relativeSquare(Us, square)));
  };
  side.shelter[ShelterB] = shelter(B1);
  side.shelter[ShelterE] = shelter(E1);
  side.shelter[ShelterG] = shelter(G1);
}

}  // namespace

const PawnEntry& pawnStructure(Evaluator& evaluator) {
  PawnHash& hash = evaluator.pawnHash;
  const Board& board = hash.board;
  PawnEntry& entry = hash.table[board.pawnKey & hash.mask];
  evaluator.pawnEntry = &entry;
  if (entry.key == board.pawnKey) {
    ++hash.hits;
    return entry;
  }

  ++hash.stores;
  entry = {};
  entry.key = board.pawnKey;
  fillSide<White>(board, evaluator.tables, entry);
  fillSide<Black>(board, evaluator.tables, entry);
  return entry;
}

int shelterAt(const Board& board, Colour colour, Square square) {
  return colour == White ? shelterFor<White>(board, square) : shelterFor<Black>(board, square);
}

}  // namespace quill
