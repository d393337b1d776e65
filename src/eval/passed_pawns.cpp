#include "eval/passed_pawns.h"

#include "board/attacks.h"
#include "eval/evaluator.h"
#include "eval/geometry.h"
#include "eval/see.h"

namespace quill {

namespace {

template <Colour Us>
struct PassedContext {
  static constexpr Colour Them = Us ^ 1;
  static constexpr int Up = Us == White ? 1 : -1;  // ranks

  explicit PassedContext(const Evaluator& evaluator)
      : board(evaluator.board),
        own(board.side[Us].bb),
        enemy(board.side[Them].bb),
        passed(evaluator.pawnEntry->passed & own[Pawn]) {
    const bool hasLongRange = (enemy[Bishop] | enemy[Queen]) != 0;
    duoBonus = !hasLongRange && (enemy[Knight] | enemy[Rook]) != 0 ? 8 : 0;
    if (enemy[Bishop] != 0)
      freedom = 0;
    else if (enemy[Rook] != 0)
      freedom = enemy[Knight] != 0 ? 0 : 8;
    else
      freedom = enemy[Knight] != 0 ? 8 : 16;
  }

  const Board& board;
  const std::array<Bitboard, 7>& own;
  const std::array<Bitboard, 7>& enemy;
  Bitboard passed;  // of this colour
  int freedom;      // grows as fewer kinds of enemy pieces can stop a passed pawn
  int duoBonus;     // for two passed pawns together; only against knights and rooks
};

// Whether the pawn can step ahead without being lost for nothing.
template <Colour Us>
bool canStep(const Board& board, Square square, Square front) {
  Move step = makeQuiet(square, front);
  if (relativeRank(Us, front) == 7) step = withPromotion(step, Queen);
  return see(board, step) >= 0;
}

// What the pawn's opening bonus is multiplied by, in 1/64.
template <Colour Us>
int supportOf(const PassedContext<Us>& c, Square square, bool diagonalPasser, bool sidePasser) {
  const Square front = square + 8 * c.Up;
  int support = c.freedom;
  if (diagonalPasser) support += 16 + c.duoBonus;
  if (sidePasser) {
    support += 24 + c.duoBonus;
  } else if (contains(c.own[0], front)) {
    support -= 2;
  } else if (contains(c.enemy[0], front)) {
    support -= 4;
    if (diagonalPasser && contains(c.enemy[Bishop], front)) support -= 4;
  } else if (canStep<Us>(c.board, square, front)) {
    support += 8;
  }
  if ((c.enemy[0] & frontSpan[Us][square]) == 0) support += 8;
  return support;
}

// What the endgame bonus has in addition: the distance of both kings, and rooks and queens in front
// of the pawn or behind it.
template <Colour Us>
int endgameSupportOf(const PassedContext<Us>& c, Square square, bool hasPartner) {
  const int file = fileOf(square);
  const int rank = rankOf(square);
  int support = 16 * (kingSteps(c.board.side[c.Them].kingSquare, file, rank + c.Up) - 2);
  support += 4 * (12 - 3 * kingSteps(c.board.side[Us].kingSquare, file, rank + 2 * c.Up));

  const Bitboard ahead = frontSpan[Us][square];
  const Bitboard behind = frontSpan[c.Them][square];
  if (c.enemy[Rook] & behind) support -= 8;
  if ((c.own[Rook] | c.own[Queen]) & behind) support += 8;
  if (c.own[Queen] != 0) support += 8;
  if (c.own[Rook] & ahead) support += hasPartner ? 8 : -8;
  return support;
}

template <Colour Us>
void addPassed(const Evaluator& evaluator, int& opening, int& endgame) {
  if ((evaluator.pawnEntry->passed & evaluator.board.side[Us].bb[Pawn]) == 0) return;
  const PassedContext<Us> context(evaluator);
  const int openingWeight = evaluator.tables.weights[PassedPawnsOpening];
  const int endgameWeight = evaluator.tables.weights[PassedPawnsEndgame];
  for (Bitboard pawns = context.passed; pawns != 0;) {
    const Square square = popLowest(pawns);
    const int rank = relativeRank(Us, square);
    const bool diagonalPasser = (context.passed & pawnAttacks[Us][square]) != 0;
    const bool sidePasser = (context.passed & kingAttacks[square] & fileRank[square].rank) != 0;
    const int support = supportOf<Us>(context, square, diagonalPasser, sidePasser);
    const int endgameSupport =
        support + endgameSupportOf<Us>(context, square, diagonalPasser || sidePasser);
    opening += (PassedOpening[rank] * openingWeight * support) >> 16;
    endgame += (PassedEndgame[rank] * endgameWeight * endgameSupport) >> 16;
  }
}

}  // namespace

void passedPawns(const Evaluator& evaluator, Colour colour, int& opening, int& endgame) {
  if (colour == White)
    addPassed<White>(evaluator, opening, endgame);
  else
    addPassed<Black>(evaluator, opening, endgame);
}

}  // namespace quill
