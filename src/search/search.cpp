#include "search/search.h"

#include <algorithm>
#include <cassert>

#include "board/make_move.h"
#include "board/mate_in_one.h"
#include "board/movegen.h"
#include "eval/evaluator.h"
#include "eval/see.h"
#include "search/move_order.h"
#include "search/params.h"
#include "search/quiescence.h"
#include "search/quiet_threats.h"
#include "search/threat.h"
#include "search/tt.h"
#include "search/worker.h"
#include "smp/split_point.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"

namespace quill {

namespace {

// One node of the main search while it is being searched.
struct Node : NodeParams {
  int alpha;       // raised as better moves are found
  int entryAlpha;  // as the call received it
  int best = -MateScore;
  Move bestMove = NoMove;
  Move hashMove = NoMove;  // searched before the list; later the list's excluded move
  UndoInfo undo{};         // of the node's own position
};

// What a step says: the node is decided with this score, or the next step has to look.
struct Verdict {
  bool decided = false;
  int score = 0;

  static Verdict decide(int score) { return {true, score}; }
};

// The list of a node's moves, the early ones in front of the late ones.
struct NodeMoves {
  Move list[MaxMoves];
  Move* end = list;
  Move* late = list;  // from here on moves may be pruned and reduced
  int threats[MaxMoves];
  bool hasThreats = false;  // threats of the late moves are computed
};

bool isStopped(const Worker& worker) { return worker.stop.load(std::memory_order_relaxed); }

int pieces(const Board& board, Colour colour) { return pieceCount(board.side[colour].material); }

// Bishops, rooks and queens of the colour.
bool hasSlider(const Board& board, Colour colour) {
  const Side& side = board.side[colour];
  return (side.bb[Bishop] | side.bb[Rook] | side.bb[Queen]) != 0;
}

bool hasMajor(const Board& board, Colour colour) {
  return (board.side[colour].bb[Rook] | board.side[colour].bb[Queen]) != 0;
}

// Makes the move and all that its child relies on; the child's table lines are on their way
// meanwhile.
void makeForSearch(Worker& worker, Move move) {
  makeMove(worker.board, move);
  worker.tt.prefetch(worker.board);
  prefetchPawnEntry(worker.evaluator);
  updateAttackInfo(worker.board);
}

void rewardKiller(Worker& worker, const Node& node, Move move) {
  if (!node.inCheck && isQuiet(move)) updateKillers(worker.killers, node.ply, move);
}

void store(Worker& worker, const Node& node, int bound, int score, Move move) {
  worker.tt.storeScore(worker, bound, node.depth, node.ply, score, move, node.eval);
}

// The move fails high: it is the node's answer.
int failHigh(Worker& worker, const Node& node, Move move, int score) {
  rewardKiller(worker, node, move);
  setLine(worker, node.ply, move);
  store(worker, node, LowerBound, score, move);
  return score;
}

// What the table knows: a cut-off, or the evaluation and the hash move.
Verdict probeTable(Worker& worker, Node& node) {
  TtEntry entry;
  if (!worker.tt.probe(worker, entry)) {
    node.eval = evaluate(worker.evaluator);
    return {};
  }
  const int score = scoreFromTable(entry.score, node.ply);
  const bool mayCut = (node.flags & ZeroWindowNodes) != 0 &&
                      ((entry.bound & StaticCut) == 0 || (node.flags & NullOk) != 0);
  if (mayCut && cutsOff(entry, score, node.depth, node.alpha, node.beta)) {
    if ((entry.bound & LowerBound) != 0 && entry.move != NoMove)
      rewardKiller(worker, node, entry.move);
    setLine(worker, node.ply, entry.move);
    return Verdict::decide(score);
  }
  node.eval = entry.eval;
  if ((node.flags & (PvNode | CutNode)) != 0) node.hashMove = entry.move;
  return {};
}

// No line through this node can be better for either side than the mates they have already.
Verdict pruneByMateDistance(const Node& node) {
  if (node.alpha > MateDistanceScore && node.alpha >= MateScore - 1 - node.ply) {
    return Verdict::decide(node.alpha);
  }
  const int mated = node.ply - MateScore + (node.inCheck ? 0 : 2);
  if (node.beta < -MateDistanceScore && node.beta <= mated) return Verdict::decide(node.beta);
  return {};
}

// Static null-move pruning: so far above beta, and under no threat, that a move would only confirm
// it.
Verdict cutStatically(Worker& worker, const Node& node) {
  const Board& board = worker.board;
  if ((node.flags & (NullOk | PvNode)) != NullOk || node.inCheck) return {};
  if (node.beta < -DecisiveScore || node.depth > StaticNullDepth) return {};
  if (node.eval - Margin[node.depth + 1] < node.beta || !hasSlider(board, board.stm)) return {};
  if (node.eval - threatValue(board, board.stm) < node.beta) return {};
  if (findMateInOne(board, board.stm) != NoMove) return {};
  store(worker, node, LowerBound | StaticCut, node.beta, NoMove);
  return Verdict::decide(node.beta);
}

// The score of passing the turn, searched shallow first and to its full reduced depth only when
// that fails high.
int searchNullMove(Worker& worker, const Node& node) {
  Board& board = worker.board;
  const bool few = pieces(board, board.stm) < 2;
  const int depth = node.depth - (few ? NullMoveFewReduction : NullMoveReduction);
  const auto reply = [&](int d) {
    return -search(worker, node.ply + 1, d, -node.beta, -node.alpha, AllNode);
  };
  makeNullMove(board);
  worker.tt.prefetch(board);
  updateAttackInfo(board);
  int score = 0;
  if (depth > 0) {
    score = reply(depth / 2);
    if (score >= node.beta) score = reply(depth);
  } else {
    score = reply(depth);
  }
  unmakeNullMove(board, node.undo);
  return score;
}

Verdict cutByNullMove(Worker& worker, const Node& node) {
  const Board& board = worker.board;
  if ((node.flags & (CutNode | NullOk)) != (CutNode | NullOk) || node.inCheck) return {};
  if (node.beta < -DecisiveScore || pieces(board, board.stm) == 0) return {};
  if (node.beta >= node.eval - NullMoveMargin) return {};

  const int score = searchNullMove(worker, node);
  if (isStopped(worker)) return Verdict::decide(0);
  // A mate that needs the opponent to pass proves nothing.
  if (score > DecisiveScore) return {};
  if (score < node.beta) {
    const bool threat = (node.flags & Reduced) != 0 && score < NullMateThreat;
    return threat ? Verdict::decide(-MateScore) : Verdict{};
  }
  const int reduction =
      hasSlider(board, board.stm) ? VerificationReduction : VerificationFewReduction;
  if (node.depth > reduction) {
    const int verified =
        search(worker, node.ply, node.depth - reduction, node.beta - 1, node.beta, CutNode);
    if (isStopped(worker)) return Verdict::decide(0);
    if (verified < node.beta) return {};
  }
  setLine(worker, node.ply, NoMove);
  store(worker, node, LowerBound | StaticCut, score, NoMove);
  return Verdict::decide(score);
}

// Internal iterative deepening: a shallower search of the same node finds the move to begin with.
Verdict deepenInternally(Worker& worker, Node& node) {
  if (node.hashMove != NoMove || node.depth == 1 || (node.flags & (PvNode | CutNode)) == 0)
    return {};
  const int score =
      search(worker, node.ply, node.depth - InternalReduction, node.alpha, node.beta, node.flags);
  if (isStopped(worker)) return Verdict::decide(0);
  if (score > node.alpha) node.hashMove = worker.pv[node.ply][0];
  if (score >= node.beta && score > ForcedMateScore) return Verdict::decide(score);
  if (score < node.alpha && score < -ForcedMateScore) return Verdict::decide(score);
  return {};
}

// 1 when the move, already made, deserves to be looked at one ply deeper.
int extensionOf(const Worker& worker, Move move) {
  const Board& board = worker.board;
  const Move previous = board.moves[board.ply - 1];
  // A recapture that wins something.
  if (isTactical(previous) && toOf(move) == toOf(previous) && see(board, move) > 0) return 1;
  // The last piece has gone: a pawn ending must be judged exactly.
  if (capturedType(previous) > Pawn && pieces(board, White) == 0 && pieces(board, Black) == 0)
    return 1;
  return 0;
}

int extendedDepth(const Worker& worker, const NodeParams& node, Move move, int depth) {
  if (depth < node.depth && node.depth > ExtensionDepth) depth += extensionOf(worker, move);
  return depth;
}

// The hash move before any move is generated: a cut-off here saves the generator.
Verdict searchHashMove(Worker& worker, Node& node) {
  const Move move = node.hashMove;
  if (move == NoMove) return {};
  assert(isLegalMove(worker.board, move));
  makeForSearch(worker, move);
  const int depth =
      extendedDepth(worker, node, move, node.newDepth + ((move & MarkFlag) != 0 ? 1 : 0));
  const unsigned flags = (node.flags & PvNode) != 0 ? unsigned{PvNode} : oppositeNode(node.flags);
  const int score = -search(worker, node.ply + 1, depth, -node.beta, -node.alpha, flags);
  unmakeMove(worker.board, move, node.undo);
  if (isStopped(worker)) return Verdict::decide(0);
  if (score >= node.beta) return Verdict::decide(failHigh(worker, node, move, score));
  if (score > node.alpha) {
    extendLine(worker, node.ply, move);
    store(worker, node, LowerBound, score, move);
    node.alpha = score;
  }
  node.best = score;
  node.bestMove = move;
  return {};
}

void markSingleReply(Node& node, NodeMoves& moves) {
  ++node.newDepth;
  moves.list[0] |= MarkFlag;
  moves.late = moves.end;
}

// Generates and orders the moves. Decides the node when there are none.
Verdict prepareMoves(Worker& worker, Node& node, NodeMoves& moves) {
  const Board& board = worker.board;
  const Move excluded = withoutMark(node.hashMove);
  node.reduction = hasMajor(board, board.stm) ? LateReduction : LateFewReduction;
  node.futilityLimit = MateScore;
  if (node.inCheck) {
    moves.end = generateEvasions(board, moves.list);
    if (moves.end == moves.list) return Verdict::decide(-MateScore + node.ply);
    if (moves.end == moves.list + 1) {
      markSingleReply(node, moves);
    } else {
      orderEvasions(board, moves.list, moves.end, excluded);
      moves.late = moves.end;
    }
    return {};
  }
  if ((node.flags & ZeroWindowNodes) != 0 && node.depth <= FutilityDepth &&
      pieces(board, board.stm ^ 1) > 0) {
    node.futilityLimit = node.eval + Margin[node.depth];
  }
  moves.end = generateMoves(board, moves.list);
  if (moves.end == moves.list) return Verdict::decide(DrawScore);
  if (moves.end == moves.list + 1) {
    markSingleReply(node, moves);
  } else {
    moves.late = orderMoves(board, worker.killers, node.ply, moves.list, moves.end, excluded);
  }
  return {};
}

// The threat flag of a late move. The flags of all late moves are computed when the first is
// needed: most nodes are decided by an early move.
int threatOf(const Worker& worker, const Node& node, NodeMoves& moves, const Move* move) {
  if (node.eval >= node.beta || node.inCheck) return 0;
  if (!moves.hasThreats) {
    moves.hasThreats = true;
    flagQuietThreats(worker.board, move, moves.end, moves.threats + (move - moves.list),
                     node.beta - node.eval);
  }
  return moves.threats[move - moves.list];
}

// Takes a searched move's score into the node.
Verdict takeScore(Worker& worker, Node& node, Move move, int score) {
  if (score <= node.best) return {};
  if (score >= node.beta) return Verdict::decide(failHigh(worker, node, move, score));
  node.best = score;
  node.bestMove = move;
  if (score > node.alpha) {
    store(worker, node, LowerBound, score, move);
    extendLine(worker, node.ply, move);
    node.alpha = score;
  }
  return {};
}

// Offers the moves from `at` on to idle threads. Says whether they have been searched; the verdict
// is then the node's, when it has one.
bool splitMoves(Worker& worker, Node& node, NodeMoves& moves, const Move* at, Verdict& verdict) {
  const Move* late = std::max<const Move*>(at, moves.late);
  if (late != moves.end) threatOf(worker, node, moves, late);
  const auto from = at - moves.list;
  // Early moves have no flags; late ones none while the node is not behind.
  const Move* const unflagged = moves.hasThreats ? late : moves.end;
  std::fill(moves.threats + from, moves.threats + (unflagged - moves.list), 0);
  const SplitResult result =
      trySplit(worker, {node, node.alpha, node.best, node.bestMove, withoutMark(node.hashMove), at,
                        moves.threats + from, static_cast<int>(moves.end - at),
                        static_cast<int>(late - at)});
  if (!result.isSplit) return false;
  if (isStopped(worker)) {
    verdict = Verdict::decide(0);
  } else if (result.best >= node.beta) {
    verdict = Verdict::decide(failHigh(worker, node, result.bestMove, result.best));
  } else {
    if (result.best > node.alpha) {
      std::copy_n(result.pv, MaxSearchPly, worker.pv[node.ply].begin());
    }
    node.best = result.best;
    node.bestMove = result.bestMove;
  }
  return true;
}

// A child is small most of the time: its table line has to be on its way this many moves before.
constexpr int PrefetchAhead = 2;

Verdict searchMoves(Worker& worker, Node& node, NodeMoves& moves) {
  const Move excluded = withoutMark(node.hashMove);
  for (const Move* at = moves.list; at < std::min(moves.list + PrefetchAhead, moves.end); ++at)
    worker.tt.prefetchChild(worker.board, *at);
  for (const Move* at = moves.list; at != moves.end; ++at) {
    const Move move = *at;
    if (excluded != NoMove && isSameMove(move, excluded)) continue;
    if (canSplit(worker) && node.bestMove != NoMove && at + 1 != moves.end && !isStopped(worker)) {
      Verdict verdict;
      if (splitMoves(worker, node, moves, at, verdict)) return verdict;
    }
    if (moves.end - at > PrefetchAhead) worker.tt.prefetchChild(worker.board, at[PrefetchAhead]);
    const bool late = at >= moves.late;
    const int threat = late ? threatOf(worker, node, moves, at) : 0;
    const MoveResult result = searchMove(worker, node, node.undo, move, late, threat, node.alpha,
                                         node.bestMove != NoMove);
    if (result.kind == MoveResult::Stopped) return Verdict::decide(0);
    if (result.kind == MoveResult::Pruned) {
      if (node.best < result.score) {
        node.best = result.score;
        node.bestMove = move;
      }
      continue;
    }
    if (const Verdict verdict = takeScore(worker, node, move, result.score); verdict.decided)
      return verdict;
  }
  return {};
}

int finishNode(Worker& worker, const Node& node) {
  if (node.best > node.entryAlpha) {
    rewardKiller(worker, node, node.bestMove);
    store(worker, node, ExactBound, node.best, node.bestMove);
  } else {
    setLine(worker, node.ply, node.bestMove);
    store(worker, node, UpperBound, node.best, node.bestMove);
  }
  return node.best;
}

// The node itself, once draws and the depth have been looked at.
int searchNode(Worker& worker, Node& node) {
  const Board& board = worker.board;
  if ((node.flags & (CutNode | NullOk)) == (CutNode | NullOk) && !node.inCheck)
    worker.tt.prefetchChild(board, NoMove);
  Verdict verdict = probeTable(worker, node);
  if (verdict.decided) return verdict.score;
  if (node.ply > DeepestPly) return node.eval;
  verdict = pruneByMateDistance(node);
  if (verdict.decided) return verdict.score;
  verdict = cutStatically(worker, node);
  if (verdict.decided) return verdict.score;
  node.undo = board;
  verdict = cutByNullMove(worker, node);
  if (verdict.decided) return verdict.score;
  node.newDepth = node.depth - 1 + (node.inCheck ? 1 : 0);
  verdict = deepenInternally(worker, node);
  if (verdict.decided) return verdict.score;
  verdict = searchHashMove(worker, node);
  if (verdict.decided) return verdict.score;
  NodeMoves moves;
  verdict = prepareMoves(worker, node, moves);
  if (verdict.decided) return verdict.score;
  verdict = searchMoves(worker, node, moves);
  if (verdict.decided) return verdict.score;
  return finishNode(worker, node);
}

}  // namespace

int search(Worker& worker, int ply, int depth, int alpha, int beta, unsigned flags) {
  if (isStopped(worker)) return 0;
  if (depth < 1) {
    ++worker.stats.frontierNodes;
    return qsearch(worker, ply, QuiescenceCheckDepth, alpha, beta, flags | InQuiescence);
  }
  ++worker.stats.nodes;
  if (worker.stats.nodes % PollNodes == 0) pollLimits(worker);
  if (isStopped(worker)) return 0;
  worker.selDepth = std::max(worker.selDepth, ply);
  worker.pv[ply][0] = NoMove;
  if (isDrawByRule(worker, ply, beta)) return DrawScore;

  Node node{};
  node.ply = ply;
  node.depth = depth;
  node.beta = beta;
  node.flags = flags;
  node.inCheck = worker.board.isInCheck();
  node.alpha = alpha;
  node.entryAlpha = alpha;
  return searchNode(worker, node);
}

MoveResult searchMove(Worker& worker, const NodeParams& node, const UndoInfo& undo, Move move,
                      bool late, int threat, int alpha, bool hasBestMove) {
  if (threat == 1 && alpha < MateDistanceScore && see(worker.board, move) < 0) threat = 0;
  if (late && node.futilityLimit < alpha && isQuiet(move) && threat == 0) {
    ++worker.stats.pruned;
    return {MoveResult::Pruned, node.futilityLimit};
  }
  makeForSearch(worker, move);
  const int depth = extendedDepth(worker, node, move, node.newDepth);
  const auto searchChild = [&](int d, int low, int high, unsigned flags) {
    return -search(worker, node.ply + 1, d, -high, -low, flags);
  };
  int score = alpha + 1;
  if (depth > 0 && threat == 0 && late) {
    score = searchChild(depth - node.reduction, alpha, alpha + 1, Reduced | CutNode | NullOk);
  }
  if (score > alpha && !isStopped(worker)) {
    if ((node.flags & PvNode) != 0) {
      if (hasBestMove) score = searchChild(depth, alpha, alpha + 1, CutNode | NullOk);
      if (!hasBestMove || (score > alpha && !isStopped(worker))) {
        score = searchChild(depth, alpha, node.beta, PvNode);
      }
    } else {
      const unsigned flags = hasBestMove ? CutNode | NullOk : oppositeNode(node.flags);
      score = searchChild(depth, alpha, node.beta, flags);
    }
  }
  unmakeMove(worker.board, move, undo);
  if (isStopped(worker)) return {MoveResult::Stopped, 0};
  return {MoveResult::Searched, score};
}

bool pollLimits(Worker& worker) {
  if (worker.pool.rootStop.load(std::memory_order_relaxed) || worker.timeControl.isTimeUp() ||
      worker.timeControl.isNodeLimitReached(worker.stats.searched())) {
    worker.pool.endSearch();
  }
  return isStopped(worker);
}

bool cutsOff(const TtEntry& entry, int score, int depth, int alpha, int beta) {
  const int bound = entry.bound & ExactBound;
  if (entry.depth >= depth) {
    return bound == ExactBound || (bound == LowerBound && score >= beta) ||
           (bound == UpperBound && score <= alpha);
  }
  // A forced mate stays one however deep it was found.
  return (score > DecisiveScore && bound != UpperBound && score >= beta) ||
         (score < -DecisiveScore && bound != LowerBound && score < alpha);
}

void setLine(Worker& worker, int ply, Move move) {
  worker.pv[ply][0] = move;
  worker.pv[ply][1] = NoMove;
}

void extendLine(Worker& worker, int ply, Move move) {
  auto& line = worker.pv[ply];
  const auto& rest = worker.pv[ply + 1];
  line[0] = move;
  int length = 0;
  while (length < MaxSearchPly - 2 && rest[length] != NoMove) {
    line[length + 1] = rest[length];
    ++length;
  }
  line[length + 1] = NoMove;
}

}  // namespace quill
