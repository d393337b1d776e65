#include "search/quiescence.h"

#include <algorithm>

#include "board/attacks.h"
#include "board/mate_in_one.h"
#include "board/movegen.h"
#include "eval/see.h"
#include "search/draw.h"
#include "search/move_order.h"
#include "search/node.h"
#include "search/quiet_checks.h"
#include "search/threat.h"

namespace quill {

namespace {

// Scores of the capture phase: the hash move first, whether it was generated or had to be added.
constexpr int HashMoveScore = 32767;
constexpr int AddedHashMoveScore = 32766;
constexpr int PromotionScore = 120;

// One node of the quiescence search while it is being searched.
struct QNode {
  int ply;
  int checkDepth;  // for the children, once the moves are generated
  int tableDepth;  // of the entries read and written
  int entryAlpha;
  int alpha;  // raised as better moves are found
  int beta;
  unsigned flags;
  bool inCheck;  // the side to move is
  int eval = NotEvaluated;
  int best = -MateScore;
  Move bestMove = NoMove;
  Move hashMove = NoMove;
  bool checkPhaseDue = false;  // quiet checks follow the captures
  Bitboard targets = 0;        // what the captures were generated onto
  UndoInfo undo{};
};

// The moves of one phase. Captures are picked one by one, so that a cut-off saves sorting the rest;
// the other lists arrive sorted.
struct QMoves {
  Move list[MaxMoves];
  int scores[MaxMoves];
  int size = 0;
  bool isSorted = true;

  Move pick(int at) {
    if (!isSorted) {
      int best = at;
      for (int i = at + 1; i < size; ++i) {
        if (scores[i] > scores[best]) best = i;
      }
      std::swap(list[at], list[best]);
      std::swap(scores[at], scores[best]);
    }
    return list[at];
  }
};

bool isPv(const QNode& node) { return (node.flags & ZeroWindowNodes) == 0; }

void store(Worker& worker, const QNode& node, int bound, int score, Move move) {
  worker.tt.storeScore(worker, bound, node.tableDepth, node.ply, score, move, node.eval);
}

Verdict probeTable(Worker& worker, QNode& node) {
  TtEntry entry;
  if (!worker.tt.probe(worker, entry)) {
    if (!node.inCheck) node.eval = evaluate(worker.evaluator);
    return {};
  }
  if (!isPv(node)) {
    const int score = scoreFromTable(entry.score, node.ply);
    if (cutsOff(entry, score, node.tableDepth, node.alpha, node.beta)) {
      setLine(worker, node.ply, entry.move);
      return score;
    }
  }
  node.eval = node.inCheck ? entry.eval : evaluated(worker.evaluator, entry.eval);
  node.hashMove = withoutMark(entry.move);
  return {};
}

// King and pawns that can't move: quiescence generates no quiet moves and would not notice.
bool isStalemate(const Board& board) {
  if (pieces(board, board.stm) > 0) return false;
  const Side& us = board.own();
  if ((kingAttacks[us.kingSquare] & ~board.enemyAttacks) != 0) return false;
  const Bitboard pawns = us.bb[Pawn] & ~board.blockers[board.stm];
  return (shiftForward(board.stm, pawns) & ~board.occupied) == 0 &&
         (pawnSetAttacks(board.stm, pawns) & board.enemy().bb[0]) == 0;
}

// What the side to move stands to lose before it can trust its evaluation.
struct Threats {
  bool mate = false;  // the enemy mates at once
  int loss = 0;       // centipawns
};

Threats findThreats(const Board& board, const QNode& node) {
  if (node.eval <= node.alpha) return {};
  if (findMateInOne(board, board.stm) != NoMove) return {true, 0};
  return {false, threatValue(board, board.stm)};
}

// Under a concrete threat all moves are searched instead of trusting the evaluation.
bool needsFullWidth(const Board& board, const QNode& node, int checkDepth, const Threats& threats) {
  if (node.eval <= node.alpha || (checkDepth == 0 && !isTactical(board.moves[board.ply])))
    return false;
  return threats.mate || node.eval - threats.loss <= node.alpha ||
         (threats.loss != 0 && isPv(node));
}

int standPatScore(const QNode& node, const Threats& threats) {
  if (isPv(node)) return node.eval;
  if (threats.mate) return MatedNextScore;
  return node.eval - threats.loss >= node.alpha ? node.eval : std::min(node.eval, node.alpha);
}

// Delta pruning: the evaluation is so far below alpha that most captures can't lift it there, and
// enough material is left that no ending is misjudged by it.
bool isDeltaPruned(const Board& board, const QNode& node) {
  const Side& us = board.own();
  return pieces(board, board.stm ^ 1) >= 2 && (us.bb[Rook] | us.bb[Queen]) != 0 &&
         node.alpha - node.eval > DeltaMargin;
}

// The enemy men whose capture could still reach alpha under delta pruning.
Bitboard deltaTargets(const Board& board, const QNode& node) {
  const Side& enemy = board.enemy();
  const int need = node.alpha - node.eval;
  Bitboard targets = enemy.bb[Queen] | (enemy.bb[Pawn] & relativeRankMask(board.stm, 1));
  if (need <= DeltaRooks) targets |= enemy.bb[Rook];
  if (need <= DeltaMinors) targets |= enemy.bb[Knight] | enemy.bb[Bishop];
  return targets;
}

int captureScore(const Board& board, Move move, int moverValue) {
  int score = isCapture(move) ? OrderValue[capturedType(move)] * 16 : 0;
  if (isPromotion(move)) score += PromotionScore;
  if (contains(board.enemyAttacks, fromOf(move))) score += moverValue;
  if (contains(board.enemyAttacks, toOf(move))) score -= moverValue;
  return score;
}

// Drops the losing captures and scores the others.
void filterCaptures(const Board& board, const QNode& node, QMoves& moves) {
  bool hasHashMove = node.hashMove == NoMove;
  for (int i = 0; i < moves.size;) {
    const Move move = moves.list[i];
    if (move == node.hashMove) {
      moves.scores[i++] = HashMoveScore;
      hasHashMove = true;
      continue;
    }
    const int moverValue = OrderValue[typeOf(board.squares[fromOf(move)])];
    if (OrderValue[capturedType(move)] <= moverValue && see(board, move) < 0) {
      moves.list[i] = moves.list[--moves.size];
      continue;
    }
    moves.scores[i++] = captureScore(board, move, moverValue);
  }
  if (!hasHashMove) {
    moves.list[moves.size] = node.hashMove;
    moves.scores[moves.size++] = AddedHashMoveScore;
  }
  moves.isSorted = false;
}

void prepareCaptures(const Board& board, QNode& node, QMoves& moves) {
  node.targets = board.enemy().bb[0];
  bool isHopeless = false;
  if (isDeltaPruned(board, node)) {
    isHopeless = node.alpha - node.eval > DeltaNothing;
    node.targets = isHopeless ? 0 : deltaTargets(board, node);
    node.best = node.alpha - DeltaSlack;
  }
  const Move* end = isHopeless ? moves.list : generateCaptures(board, moves.list, node.targets);
  moves.size = static_cast<int>(end - moves.list);
  filterCaptures(board, node, moves);
  node.checkPhaseDue = node.checkDepth != 0;
  node.checkDepth /= 2;
}

Verdict prepareFullWidth(Worker& worker, QNode& node, QMoves& moves) {
  Move* end = generateMoves(worker.board, moves.list);
  moves.size = static_cast<int>(end - moves.list);
  if (moves.size == 0) return DrawScore;
  orderMoves(worker.board, worker.killers, node.ply, moves.list, end, node.hashMove);
  node.checkDepth /= 2;
  return {};
}

// The moves of a side that is not in check, or its stand-pat score when that decides.
Verdict prepareQuiet(Worker& worker, QNode& node, QMoves& moves) {
  const Board& board = worker.board;
  if (isStalemate(board)) return DrawScore;
  const Threats threats = findThreats(board, node);
  if (needsFullWidth(board, node, node.checkDepth, threats))
    return prepareFullWidth(worker, node, moves);
  const int score = standPatScore(node, threats);
  if (score >= node.beta) return score;
  node.alpha = std::max(node.alpha, score);
  node.best = score;
  prepareCaptures(board, node, moves);
  return {};
}

// Leaves out the quiet evasions when the evaluation is well below alpha anyway and no mate or
// threat of our own can lift it.
void dropQuietEvasions(Worker& worker, QNode& node, QMoves& moves) {
  const Board& board = worker.board;
  const Colour enemy = board.stm ^ 1;
  node.eval = evaluated(worker.evaluator, node.eval);
  if (node.alpha <= node.eval + EvasionMargin || findMateInOne(board, enemy) != NoMove ||
      threatValue(board, enemy) != 0) {
    return;
  }
  Move* end = std::remove_if(moves.list, moves.list + moves.size,
                             [&](Move move) { return isQuiet(move) && move != node.hashMove; });
  const int kept = static_cast<int>(end - moves.list);
  if (kept < moves.size) node.best = node.eval + EvasionMargin;
  moves.size = kept;
}

Verdict prepareEvasions(Worker& worker, QNode& node, QMoves& moves) {
  const Board& board = worker.board;
  moves.size = static_cast<int>(generateEvasions(board, moves.list) - moves.list);
  const int evasions = moves.size;
  if (evasions == 0) return -MateScore + node.ply;
  if (node.checkDepth <= 1 && evasions != 2) node.checkDepth = evasions == 1 ? 1 : 0;
  if (evasions > 1 && !isPv(node)) dropQuietEvasions(worker, node, moves);
  orderEvasions(board, moves.list, moves.list + moves.size, node.hashMove);
  if (evasions == 1) moves.list[0] |= MarkFlag;
  return {};
}

// Takes a searched move's score into the node.
Verdict takeScore(Worker& worker, QNode& node, Move move, int score, bool isKiller) {
  if (score <= node.best) return {};
  if (score >= node.beta) {
    setLine(worker, node.ply, move);
    if (isKiller) updateKillers(worker.killers, node.ply, move);
    store(worker, node, LowerBound, score, move);
    return score;
  }
  node.best = score;
  node.bestMove = move;
  if (score > node.alpha) {
    node.alpha = score;
    extendLine(worker, node.ply, move);
  }
  return {};
}

// The side to move's own mate in one, searched before anything else.
Verdict searchMateInOne(Worker& worker, QNode& node) {
  Board& board = worker.board;
  const bool wanted = (node.flags & InQuiescence) != 0 || isTactical(board.moves[board.ply]);
  if (!wanted) return {};
  const Move move = findMateInOne(board, board.stm ^ 1);
  if (move == NoMove || !isLegalMove(board, move)) return {};
  makeForSearch(worker, move);
  const int score = -qsearch(worker, node.ply + 1, 0, -node.beta, -node.alpha, PvNode);
  unmakeMove(board, move, node.undo);
  if (worker.isUnwinding()) return 0;
  return takeScore(worker, node, move, score, false);
}

int searchChild(Worker& worker, const QNode& node) {
  const auto child = [&](int alpha, int beta, unsigned flags) {
    return -qsearch(worker, node.ply + 1, node.checkDepth, -beta, -alpha, flags);
  };
  if (!isPv(node)) return child(node.alpha, node.beta, node.flags ^ ZeroWindowNodes);
  const unsigned kept = node.flags & InQuiescence;
  if (node.bestMove != NoMove) {
    const int score = child(node.alpha, node.alpha + 1, kept | CutNode);
    if (worker.isUnwinding() || score <= node.alpha) return score;
  }
  return child(node.alpha, node.beta, kept | PvNode);
}

// The move at the place, 0 behind the last; its child's table line is on its way from then on.
Move pickAhead(const Worker& worker, QMoves& moves, int at) {
  if (at == moves.size) return NoMove;
  const Move move = moves.pick(at);
  worker.tt.prefetchChild(worker.board, move);
  return move;
}

Verdict searchMoves(Worker& worker, QNode& node, QMoves& moves) {
  Board& board = worker.board;
  Move next = pickAhead(worker, moves, 0);
  for (int i = 0; i < moves.size; ++i) {
    const Move move = next;
    next = pickAhead(worker, moves, i + 1);
    makeForSearch(worker, move);
    const int score = searchChild(worker, node);
    unmakeMove(board, move, node.undo);
    if (worker.isUnwinding()) return 0;
    if (const Verdict cut = takeScore(worker, node, move, score, !node.inCheck && isQuiet(move)))
      return cut;
  }
  return {};
}

int searchNode(Worker& worker, QNode& node) {
  const Board& board = worker.board;
  if (const Verdict score = probeTable(worker, node)) return *score;
  if (node.ply > DeepestPly) return evaluated(worker.evaluator, node.eval);
  QMoves moves;
  if (const Verdict score =
          node.inCheck ? prepareEvasions(worker, node, moves) : prepareQuiet(worker, node, moves))
    return *score;
  if (node.beta <= node.ply - MateScore + 2) return node.beta;
  node.undo = board;
  if (!node.inCheck) {
    if (const Verdict score = searchMateInOne(worker, node)) return *score;
  }
  if (const Verdict score = searchMoves(worker, node, moves)) return *score;
  if (node.checkPhaseDue) {
    const Bitboard uncovered = ~board.own().bb[0] & ~node.targets;
    moves.size = static_cast<int>(generateQuietChecks(board, moves.list, uncovered) - moves.list);
    moves.isSorted = true;
    if (const Verdict score = searchMoves(worker, node, moves)) return *score;
  }
  store(worker, node, node.best > node.entryAlpha ? ExactBound : UpperBound, node.best,
        node.bestMove);
  return node.best;
}

}  // namespace

int qsearch(Worker& worker, int ply, int checkDepth, int alpha, int beta, unsigned flags) {
  if (worker.isUnwinding()) return 0;
  ++worker.stats.qnodes;
  if (worker.stats.qnodes % PollQNodes == 0 && pollLimits(worker)) return 0;
  worker.pv[ply][0] = NoMove;
  if (isDrawByRule(worker, ply, beta)) return DrawScore;
  if (alpha >= MateScore - 1 - ply) return alpha;

  QNode node{};
  node.ply = ply;
  node.checkDepth = checkDepth;
  node.tableDepth = checkDepth - QuiescenceCheckDepth;
  node.entryAlpha = alpha;
  node.alpha = alpha;
  node.beta = beta;
  node.flags = flags;
  node.inCheck = worker.board.isInCheck();
  return searchNode(worker, node);
}

}  // namespace quill
