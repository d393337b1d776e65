#include "search/move_order.h"

#include <algorithm>
#include <climits>
#include <utility>

#include "eval/see.h"

namespace quill {

namespace {

constexpr int SortedPlaces = 8;  // most nodes are cut by one of the first moves
constexpr int Group = 4;         // keys that are compared at once

constexpr int HashMoveScore = 32767;
constexpr int GoodCaptureScore = 4096;
constexpr int BadCaptureScore = -8192;
constexpr int AdvancedPawnScore = 768;  // a pawn arriving on its seventh or eighth rank
constexpr int CastlingScore = 128;

// Killers of this ply, of our move before it and of our next one, two slots each. The gaps keep
// these groups apart.
constexpr int KillerScore = 1024;
constexpr int EarlierKillerScore = 1022;
constexpr int LaterKillerScore = 1018;
constexpr int FirstPlyWithEarlier = 3;
constexpr int LastPlyWithLater = 99;

// By type promoted to: knights are the surprise worth a look, bishops and rooks almost never.
constexpr int PromotionScore[8] = {0, 0, -128, -256, -256, 128, 0, 0};

// By type of a piece that interposes where an own pawn defends it.
constexpr int InterpositionScore[8] = {0, 64, 16, 32, 4, -128, 0, 0};

// King moves out of check: while the enemy is strong, to the edge; later, to the centre. a1 first.
constexpr int RetreatPoints = 13;  // enemy material points from which the king hides
constexpr int KingRetreatTable[64] = {
    20, 20, 16, 12, 12, 16, 20, 20,  //
    16, 14, 12, 10, 10, 12, 14, 16,  //
    14, 12, 10, 8,  8,  10, 12, 14,  //
    12, 10, 8,  6,  6,  8,  10, 12,  //
    12, 10, 8,  6,  6,  8,  10, 12,  //
    14, 12, 10, 8,  8,  10, 12, 14,  //
    16, 14, 12, 10, 10, 12, 14, 16,  //
    20, 20, 16, 12, 12, 16, 20, 20,
};
constexpr int KingCentreTable[64] = {
    -2, 0, 0, 1, 1, 0, 0, -2,  //
    -1, 4, 4, 4, 4, 4, 4, -1,  //
    0,  4, 7, 7, 7, 7, 4, 0,   //
    0,  4, 7, 8, 8, 7, 4, 0,   //
    0,  4, 7, 8, 8, 7, 4, 0,   //
    0,  4, 7, 7, 7, 7, 4, 0,   //
    -1, 4, 4, 4, 4, 4, 4, -1,  //
    -2, 0, 0, 1, 1, 0, 0, -2,
};

constexpr Bitboard OuterRanks = rankMask(0) | rankMask(1) | rankMask(6) | rankMask(7);

// The moves that are known to be promising at this ply before any is looked at.
struct KnownMoves {
  std::array<Move, 7> moves;
  Bitboard marks = 0;  // of the seven; spares most other moves the comparison with each of them
  static constexpr std::array<int, 7> Scores = {
      HashMoveScore,          KillerScore,      KillerScore - 1,     EarlierKillerScore,
      EarlierKillerScore - 1, LaterKillerScore, LaterKillerScore - 1};
  static constexpr int Good = 3;  // of these, how many are good moves: the hash move and this ply's

  KnownMoves(const KillerTable& killers, int ply, Move hashMove) {
    static constexpr std::array<Move, 2> None = {NoMove, NoMove};
    const auto at = static_cast<unsigned>(ply);
    const auto& earlier = ply >= FirstPlyWithEarlier ? killers[at - 2] : None;
    const auto& later = ply <= LastPlyWithLater ? killers[at + 2] : None;
    moves = {withoutMark(hashMove),
             killers[at][0],
             killers[at][1],
             earlier[0],
             earlier[1],
             later[0],
             later[1]};
    for (const Move move : moves) marks |= bit(markOf(move));
  }

  // A number 0..63 that few of a node's moves share.
  static int markOf(Move move) {
    return static_cast<int>((move ^ (move >> 6) ^ (move >> 11)) & 63);
  }

  // The first place that holds the move, 7 for none.
  int find(Move move) const {
    if (!contains(marks, markOf(move))) return 7;
    int place = 0;
    while (place < 7 && moves[static_cast<unsigned>(place)] != move) ++place;
    return place;
  }
};

struct Ordered {
  int score;
  bool isGood;
};

Ordered scoreMove(const Board& board, Move move) {
  const Square to = toOf(move);
  const int type = typeOf(board.squares[fromOf(move)]);
  Ordered result = {0, false};
  if (isTactical(move)) {
    result.isGood = see(board, move) >= 0;
    result.score = OrderValue[capturedType(move)] * 16 + PromotionScore[promotionOf(move)] +
                   (result.isGood ? GoodCaptureScore : BadCaptureScore);
  }
  // Free of branches: no two moves of a list are alike here.
  const auto ifAttacked = [&board](Square square, int value) {
    return value & -static_cast<int>((board.enemyAttacks >> square) & 1);
  };
  result.score += ifAttacked(fromOf(move), OrderValue[type]);
  result.score -= ifAttacked(to, OrderValue[type] + 1);
  const bool isAdvanced = (type == Pawn) & contains(OuterRanks, to);
  result.score += AdvancedPawnScore & -static_cast<int>(isAdvanced);
  result.score += CastlingScore & -static_cast<int>(isCastling(move));
  result.isGood |= isAdvanced;
  return result;
}

}  // namespace

void sortMoves(Move* moves, int* scores, int count, int places) {
  if (count < 2) return;
  // Score and place in one number, the earlier place the higher: one maximum, free of branches,
  // finds the next move. Whole groups of keys are looked at, so places that are done or behind the
  // last move hold the lowest number.
  alignas(16) int keys[MaxMoves];
  const auto keyOf = [](int score, int place) { return score * MaxMoves + MaxMoves - 1 - place; };
  const int end = (count + Group - 1) / Group * Group;
  for (int i = 0; i < count; ++i) keys[i] = keyOf(scores[i], i);
  for (int i = count; i < end; ++i) keys[i] = INT_MIN;
  places = std::min(places, count);
  for (int place = 0; place < places; ++place) {
    int tops[Group] = {INT_MIN, INT_MIN, INT_MIN, INT_MIN};
    for (int i = place / Group * Group; i < end; i += Group) {
      for (int lane = 0; lane < Group; ++lane) tops[lane] = std::max(tops[lane], keys[i + lane]);
    }
    const int top = std::max(std::max(tops[0], tops[1]), std::max(tops[2], tops[3]));
    const int best = MaxMoves - 1 - (top & (MaxMoves - 1));
    std::swap(moves[place], moves[best]);
    std::swap(scores[place], scores[best]);
    keys[best] = keyOf(scores[best], best);
    keys[place] = INT_MIN;
  }
}

Move* orderMoves(const Board& board, const KillerTable& killers, int ply, Move* first, Move* end,
                 Move hashMove) {
  const KnownMoves known(killers, ply, hashMove);
  int scores[MaxMoves];
  int* score = scores;
  int goodMoves = 0;
  for (const Move* move = first; move != end; ++move) {
    const int place = known.find(withoutMark(*move));
    if (place < 7) {
      *score++ = KnownMoves::Scores[static_cast<unsigned>(place)];
      goodMoves += place < KnownMoves::Good;
    } else {
      const Ordered ordered = scoreMove(board, *move);
      *score++ = ordered.score;
      goodMoves += ordered.isGood;
    }
  }
  sortMoves(first, scores, static_cast<int>(end - first), SortedPlaces);
  return first + goodMoves;
}

void orderEvasions(const Board& board, Move* first, Move* end, Move hashMove) {
  const Side& own = board.own();
  const int* const kingTable =
      materialPoints(board.enemy().material) >= RetreatPoints ? KingRetreatTable : KingCentreTable;
  const Bitboard pawnDefended = pawnSetAttacks(board.stm, own.bb[Pawn]);
  int scores[MaxMoves];
  int* score = scores;
  for (const Move* move = first; move != end; ++move) {
    const Square from = fromOf(*move);
    const Square to = toOf(*move);
    const int type = typeOf(board.squares[from]);
    if (isSameMove(*move, hashMove)) {
      *score++ = HashMoveScore;
    } else if (isCapture(*move)) {
      // The piece on the destination: an en-passant capture finds none there.
      *score++ = OrderValue[typeOf(board.squares[to])] * 256 - OrderValue[type];
    } else if (from == own.kingSquare) {
      *score++ = kingTable[to] - kingTable[from];
    } else {
      *score++ = contains(pawnDefended, to) ? InterpositionScore[type] : 0;
    }
  }
  const int count = static_cast<int>(end - first);
  sortMoves(first, scores, count, count);
}

}  // namespace quill
