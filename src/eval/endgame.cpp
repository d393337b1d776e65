#include "eval/endgame.h"

#include <cstdlib>
#include <optional>

#include "board/attacks.h"
#include "eval/evaluator.h"
#include "eval/geometry.h"
#include "eval/pawn_race.h"

namespace quill {

namespace {

constexpr Bitboard InnerFiles = ~(fileMask(0) | fileMask(7));

constexpr int MinorPoints = 3;
constexpr int RareWin = 128;       // scale where only chances remain
constexpr int DrawishMinor = 256;  // scales without pawns: minor piece against rook, and the like
constexpr int Drawish = 64;
constexpr int KnownWin = 1000;

// One colour's men by kind.
struct Force {
  explicit Force(const Side& side)
      : points(materialPoints(side.material)),
        pawns(pawnCount(side.material)),
        knights(knightCount(side.material)),
        bishops(bishopCount(side.material)),
        rooks(rookCount(side.material)),
        queens(queenCount(side.material)),
        pieces(pieceCount(side.material)) {}

  bool hasLongRange() const { return bishops + rooks + queens > 0; }
  // A bare king, one minor piece or two knights: no mate can be forced without pawns.
  bool cannotMate() const {
    return rooks + queens == 0 && points < 7 && !(points == 6 && bishops > 0);
  }

  int points;
  int pawns;
  int knights;
  int bishops;
  int rooks;
  int queens;
  int pieces;
};

// The evaluation in progress.
struct Ending {
  const Evaluator& evaluator;
  const Board& board;
  const Force force[2];
  int& score;  // White's view
  int& scale;

  int scoreOf(Colour colour) const { return colour == White ? score : -score; }
  void setScoreOf(Colour colour, int value) { score = colour == White ? value : -value; }
};

enum class Verdict { Open, Done, Exact };

// King and pawn against king, the strong side's view.
int pawnEnding(const Ending& e, Colour strong) {
  const int race = strong == White ? pawnRace(e.evaluator) : -pawnRace(e.evaluator);
  return race == 0 ? 0 : race + KnownWin;
}

// Knight and bishop drive the king into a corner of the bishop's colour.
int knightAndBishop(const Ending& e, Colour strong) {
  const Side& side = e.board.side[strong];
  const Square weakKing = e.board.side[strong ^ 1].kingSquare;
  const bool isLight = (side.bb[Bishop] & LightSquares) != 0;
  return 1600 - 32 * KbnCorner[isLight ? weakKing ^ 56 : weakKing] -
         8 * distance(side.kingSquare, weakKing) -
         distance(lowestSquare(side.bb[Knight]), side.kingSquare) -
         distance(lowestSquare(side.bb[Bishop]), side.kingSquare);
}

// Rook and pawn against rook with the weak king before the pawn: the third-rank defence while the
// pawn is not far advanced, checks from behind when it is.
std::optional<int> rookAndPawn(const Ending& e, Colour strong) {
  const Square pawn = lowestSquare(e.board.side[strong].bb[Pawn]);
  const Side& weak = e.board.side[strong ^ 1];
  const Square goal = makeSquare(fileOf(pawn), strong == White ? 7 : 0);
  if (distance(weak.kingSquare, goal) > 1) return std::nullopt;

  if (relativeRank(strong, pawn) >= 5) {
    // Not the same ranks for both colours; the tuned values depend on that.
    const Bitboard behind = strong == White ? rankMask(0) | rankMask(1) : rankMask(6);
    if ((weak.bb[Rook] & behind) != 0 || e.board.stm != strong) return 0;
    return std::nullopt;
  }
  if ((weak.bb[Rook] & relativeRankMask(strong, 5)) != 0) return 0;
  return std::nullopt;
}

// The endings with a rule of their own, all with five men or fewer.
Verdict recognise(Ending& e) {
  if (count(e.board.occupied) > 5) return Verdict::Open;
  const auto strength = [&e](Colour c) { return e.force[c].points + e.force[c].pawns; };
  const Colour strong = strength(White) >= strength(Black) ? White : Black;
  const std::uint32_t own = e.board.side[strong].material;
  const std::uint32_t other = e.board.side[strong ^ 1].material;
  const auto& one = MaterialIncrement;

  std::optional<int> result;
  if (own == one[Pawn] && other == 0)
    result = pawnEnding(e, strong);
  else if (own == one[Knight] + one[Bishop] && other == 0)
    result = knightAndBishop(e, strong);
  else if (own == one[Rook] + one[Pawn] && other == one[Rook])
    result = rookAndPawn(e, strong);
  if (!result) return Verdict::Open;
  e.setScoreOf(strong, *result);
  return Verdict::Exact;
}

// A leader with nothing but rook pawns on one file, alone or with a bishop that does not control
// the corner where they promote.
Verdict judgeRookPawns(Ending& e) {
  if (e.score == 0 || e.force[White].pieces + e.force[Black].pieces > 2) return Verdict::Open;
  const Colour leader = e.score > 0 ? White : Black;
  const Side& side = e.board.side[leader];
  const Bitboard pawns = side.bb[Pawn];
  if ((pawns & InnerFiles) != 0 || ((pawns & FileA) != 0 && (pawns & FileH) != 0))
    return Verdict::Open;

  const Force& force = e.force[leader];
  if (force.pieces == 0) {
    e.score = 0;
    return Verdict::Exact;
  }
  if (force.pieces != 1 || force.bishops != 1) return Verdict::Open;

  const Square cornerA = relativeSquare(leader, A8);
  const Square cornerH = relativeSquare(leader, H8);
  const bool isLight = (side.bb[Bishop] & LightSquares) != 0;
  const bool commandsA = contains(LightSquares, cornerA) == isLight;
  if ((pawns & (commandsA ? FileA : FileH)) != 0) return Verdict::Open;
  const Square wrongCorner = commandsA ? cornerH : cornerA;
  if (distance(e.board.side[leader ^ 1].kingSquare, wrongCorner) <= 1) {
    e.score = 0;
    return Verdict::Exact;
  }
  e.scale = RareWin;
  return Verdict::Open;
}

// Both sides have pawns. Looks for a single bishop on each side, on squares of different colours.
void judgeOppositeBishops(Ending& e) {
  const std::uint32_t bishop = MaterialIncrement[Bishop];
  for (const Colour c : {White, Black}) {
    if (e.board.side[c].material - static_cast<std::uint32_t>(e.force[c].pawns) * 0x100 != bishop)
      return;
  }
  const Bitboard bishops = e.board.side[White].bb[Bishop] | e.board.side[Black].bb[Bishop];
  if (count(bishops & LightSquares) != 1) return;
  switch (std::abs(e.force[White].pawns - e.force[Black].pawns)) {
    case 0:
      e.scale = 256;
      break;
    case 1:
      e.scale = 512;
      break;
    case 2:
      e.scale = 341;
      break;
    default:
      break;
  }
}

// Only one side has pawns.
Verdict judgeOneSidedPawns(Ending& e, Colour owner) {
  const Force& own = e.force[owner];
  const Force& other = e.force[owner ^ 1];
  const int score = e.scoreOf(owner);
  if (score < 0) {
    // The side without pawns leads.
    if (other.cannotMate()) {
      e.score = -1;  // for either colour
      return Verdict::Exact;
    }
    if (own.points + MinorPoints >= other.points) e.scale = RareWin;
  } else if (score > 0 && own.pawns == 1 && other.hasLongRange()) {
    // The other side can give up a piece for the last pawn.
    const int sacrifice = other.bishops > 0 ? 3 : other.rooks > 0 ? 5 : 10;
    if (own.points <= other.points + MinorPoints - sacrifice) e.scale = RareWin;
  }
  return Verdict::Done;
}

// No pawns, and one side is ahead by more than a minor piece.
Verdict judgePieceLead(Ending& e, Colour ahead) {
  const Force& own = e.force[ahead];
  const Force& other = e.force[ahead ^ 1];
  const int score = e.scoreOf(ahead);
  if (own.points != 6) {
    if (own.hasLongRange() || own.points > other.points + 6)
      e.setScoreOf(ahead, score + KnownWin - 100 * other.pieces);
    else
      e.setScoreOf(ahead, score / 8);
    return Verdict::Done;
  }
  // Bishops that are all on one colour can't mate.
  const Bitboard bishops = e.board.side[ahead].bb[Bishop];
  const Bitboard light = bishops & LightSquares;
  if (own.bishops >= 2 && (light == 0 || light == bishops) && score > 0) {
    e.score = 0;
    return Verdict::Exact;
  }
  return Verdict::Done;
}

Verdict judgePawnless(Ending& e) {
  const Force& white = e.force[White];
  const Force& black = e.force[Black];
  if (e.score != 0 && e.force[e.score > 0 ? White : Black].cannotMate()) {
    e.score = 0;
    return Verdict::Exact;
  }
  if (white.points > black.points + MinorPoints) return judgePieceLead(e, White);
  if (black.points > white.points + MinorPoints) return judgePieceLead(e, Black);

  const int points = white.points + black.points;
  const bool hasPair = white.bishops >= 2 || black.bishops >= 2;
  const bool hasKnight = white.knights + black.knights > 0;
  if (points == 9 && hasPair && hasKnight) return Verdict::Done;
  e.scale = points == 8 ? DrawishMinor : Drawish;
  return Verdict::Done;
}

Verdict judge(Ending& e) {
  if (recognise(e) == Verdict::Exact) return Verdict::Exact;
  const Force& white = e.force[White];
  const Force& black = e.force[Black];
  if (white.pieces == 0 || black.pieces == 0) {
    if (const int race = pawnRace(e.evaluator)) {
      e.score += race;
      return Verdict::Done;
    }
  }
  if (judgeRookPawns(e) == Verdict::Exact) return Verdict::Exact;
  if (white.pawns > 0 && black.pawns > 0) {
    judgeOppositeBishops(e);
    return Verdict::Done;
  }
  if (white.pawns > 0) return judgeOneSidedPawns(e, White);
  if (black.pawns > 0) return judgeOneSidedPawns(e, Black);
  return judgePawnless(e);
}

}  // namespace

bool endgameRules(const Evaluator& evaluator, int& score, int& scale) {
  const Board& board = evaluator.board;
  Ending ending{
      evaluator, board, {Force(board.side[White]), Force(board.side[Black])}, score, scale};
  return judge(ending) == Verdict::Exact;
}

}  // namespace quill
