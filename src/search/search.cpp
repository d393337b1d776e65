#include "search/search.h"

#include <algorithm>
#include <cassert>

#include "board/mate_in_one.h"
#include "board/movegen.h"
#include "eval/see.h"
#include "search/draw.h"
#include "search/move_order.h"
#include "search/node.h"
#include "search/quiescence.h"
#include "search/quiet_threats.h"
#include "search/threat.h"
#include "smp/split.h"

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

// The list of a node's moves, the early ones in front of the late ones.
struct NodeMoves {
  Move list[MaxMoves];
  Move* end = list;
  Move* late = list;  // from here on moves may be pruned and reduced
  int threats[MaxMoves];
  bool hasThreats = false;  // threats of the late moves are computed
};

// Bishops, rooks and queens of the colour.
bool hasSlider(const Board& board, Colour colour) {
  const Side& side = board.side[colour];
  return (side.bb[Bishop] | side.bb[Rook] | side.bb[Queen]) != 0;
}

// Rooks or queens of the colour.
bool hasMajor(const Board& board, Colour colour) {
  return (board.side[colour].bb[Rook] | board.side[colour].bb[Queen]) != 0;
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
  node.eval = NotEvaluated;
  if (!worker.tt.probe(worker, entry)) {
    if (!node.inCheck) node.eval = evaluate(worker.evaluator);
    return {};
  }
  const int score = scoreFromTable(entry.score, node.ply);
  const bool mayCut = (node.flags & ZeroWindowNodes) != 0 &&
                      ((entry.bound & StaticCut) == 0 || (node.flags & NullOk) != 0);
  if (mayCut && cutsOff(entry, score, node.depth, node.alpha, node.beta)) {
    if ((entry.bound & LowerBound) != 0 && entry.move != NoMove)
      rewardKiller(worker, node, entry.move);
    setLine(worker, node.ply, entry.move);
    return score;
  }
  if (!node.inCheck) node.eval = evaluated(worker.evaluator, entry.eval);
  if ((node.flags & (PvNode | CutNode)) != 0) node.hashMove = entry.move;
  return {};
}

// No line through this node can be better for either side than the mates they have already.
Verdict pruneByMateDistance(const Node& node) {
  if (node.alpha >= MateScore - 1 - node.ply) return node.alpha;
  if (node.beta <= node.ply - MateScore + (node.inCheck ? 0 : 2)) return node.beta;
  return {};
}

// Static null-move pruning: the evaluation is so far above beta, with no threat against it, that a
// move would only confirm it.
Verdict cutStatically(Worker& worker, const Node& node) {
  const Board& board = worker.board;
  if ((node.flags & (NullOk | PvNode)) != NullOk || node.inCheck) return {};
  if (node.beta <= -DecisiveScore || node.depth > StaticNullDepth) return {};
  if (node.eval - Margin[node.depth + 1] < node.beta || !hasSlider(board, board.stm)) return {};
  if (node.eval - threatValue(board, board.stm) < node.beta) return {};
  if (findMateInOne(board, board.stm) != NoMove) return {};
  store(worker, node, LowerBound | StaticCut, node.beta, NoMove);
  return node.beta;
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
  if (node.beta <= -DecisiveScore || pieces(board, board.stm) == 0) return {};
  if (node.beta >= node.eval - NullMoveMargin) return {};

  const int score = searchNullMove(worker, node);
  if (worker.isUnwinding()) return 0;
  // A mate that needs the opponent to pass proves nothing.
  if (score >= DecisiveScore) return {};
  if (score < node.beta) {
    // A mate threat behind a reduced late move: the parent searches the move at full depth.
    if ((node.flags & Reduced) != 0 && score <= -ForcedMateScore) return -MateScore;
    return {};
  }
  const int reduction =
      hasSlider(board, board.stm) ? VerificationReduction : VerificationFewReduction;
  if (node.depth > reduction) {
    const int verified =
        search(worker, node.ply, node.depth - reduction, node.beta - 1, node.beta, CutNode);
    if (worker.isUnwinding()) return 0;
    if (verified < node.beta) return {};
  }
  setLine(worker, node.ply, NoMove);
  store(worker, node, LowerBound | StaticCut, score, NoMove);
  return score;
}

// Internal iterative deepening: a shallower search of the same node finds the move to begin with.
Verdict deepenInternally(Worker& worker, Node& node) {
  if (node.hashMove != NoMove || node.depth == 1 || (node.flags & (PvNode | CutNode)) == 0)
    return {};
  const int score =
      search(worker, node.ply, node.depth - InternalReduction, node.alpha, node.beta, node.flags);
  if (worker.isUnwinding()) return 0;
  if (score > node.alpha) node.hashMove = worker.pv[node.ply][0];
  if (score >= node.beta && score > ForcedMateScore) return score;
  if (score < node.alpha && score < -ForcedMateScore) return score;
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
  if (worker.isUnwinding()) return 0;
  if (score >= node.beta) return failHigh(worker, node, move, score);
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
    if (moves.end == moves.list) return -MateScore + node.ply;
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
  if (moves.end == moves.list) return DrawScore;
  if (moves.end == moves.list + 1) {
    markSingleReply(node, moves);
  } else {
    moves.late = orderMoves(board, worker.killers, node.ply, moves.list, moves.end, excluded);
  }
  return {};
}

// Computes the threat flags of the late moves from this one on, once, where they matter: most nodes
// are decided by an early move, and a node that is not behind needs none.
void flagThreats(const Worker& worker, const Node& node, NodeMoves& moves, const Move* from) {
  if (moves.hasThreats || node.inCheck || node.eval >= node.beta) return;
  moves.hasThreats = true;
  flagQuietThreats(worker.board, from, moves.end, moves.threats + (from - moves.list),
                   node.beta - node.eval);
}

// The threat flag of a late move.
int threatOf(const Worker& worker, const Node& node, NodeMoves& moves, const Move* move) {
  flagThreats(worker, node, moves, move);
  return moves.hasThreats ? moves.threats[move - moves.list] : NoThreat;
}

// Takes a searched move's score into the node.
Verdict takeScore(Worker& worker, Node& node, Move move, int score) {
  if (score <= node.best) return {};
  if (score >= node.beta) return failHigh(worker, node, move, score);
  node.best = score;
  node.bestMove = move;
  if (score > node.alpha) {
    store(worker, node, LowerBound, score, move);
    extendLine(worker, node.ply, move);
    node.alpha = score;
  }
  return {};
}

// Shares the moves from `at` on with idle threads: no more than there are moves besides that one.
// What they came to, or nothing when nobody came.
std::optional<SplitResult> splitMoves(Worker& worker, const Node& node, NodeMoves& moves,
                                      const Move* at) {
  const Move excluded = withoutMark(node.hashMove);
  const auto others = std::count_if(at + 1, static_cast<const Move*>(moves.end), [&](Move move) {
    return excluded == NoMove || !isSameMove(move, excluded);
  });
  if (others == 0) return {};
  SplitPoint* const split = trySplit(worker, node, static_cast<int>(others));
  if (split == nullptr) return {};
  const Move* late = std::max<const Move*>(at, moves.late);
  if (late != moves.end) flagThreats(worker, node, moves, late);
  const auto from = at - moves.list;
  // Early moves have no flags; late ones none while the node is not behind.
  const Move* const unflagged = moves.hasThreats ? late : moves.end;
  std::fill(moves.threats + from, moves.threats + (unflagged - moves.list), 0);
  return searchSplit(worker, *split,
                     {node.alpha, node.best, node.bestMove, excluded, at, moves.threats + from,
                      static_cast<int>(moves.end - at), static_cast<int>(late - at)});
}

// Takes what a split came to into the node.
Verdict takeSplit(Worker& worker, Node& node, const SplitResult& result) {
  if (worker.isUnwinding()) return 0;
  if (result.best >= node.beta) return failHigh(worker, node, result.bestMove, result.best);
  if (result.best > node.alpha) joinLine(worker.pv[node.ply].data(), result.pv[0], result.pv + 1);
  node.best = result.best;
  node.bestMove = result.bestMove;
  return {};
}

// Most children are searched quickly, so a child's table line is asked for this many moves ahead.
constexpr int PrefetchAhead = 2;

// Asks for the table line of the move's child, unless futility pruning will most likely skip the
// move: there are more of those than of all others, and each would push a useful line out.
void prefetchMove(const Worker& worker, const Node& node, const NodeMoves& moves, const Move* at) {
  if (at >= moves.late && node.futilityLimit < node.alpha && isQuiet(*at) &&
      !(moves.hasThreats && moves.threats[at - moves.list] != NoThreat)) {
    return;
  }
  worker.tt.prefetchChild(worker.board, *at);
}

Verdict searchMoves(Worker& worker, Node& node, NodeMoves& moves) {
  const Move excluded = withoutMark(node.hashMove);
  for (const Move* at = moves.list; at < std::min(moves.list + PrefetchAhead, moves.end); ++at)
    prefetchMove(worker, node, moves, at);
  for (const Move* at = moves.list; at != moves.end; ++at) {
    const Move move = *at;
    if (excluded != NoMove && isSameMove(move, excluded)) continue;
    if (node.depth >= SplitDepth && canSplit(worker) && node.bestMove != NoMove &&
        at + 1 != moves.end && !worker.isUnwinding()) {
      if (const auto split = splitMoves(worker, node, moves, at))
        return takeSplit(worker, node, *split);
    }
    if (moves.end - at > PrefetchAhead) prefetchMove(worker, node, moves, at + PrefetchAhead);
    const bool late = at >= moves.late;
    const int threat = late ? threatOf(worker, node, moves, at) : NoThreat;
    const MoveResult result = searchMove(worker, node, node.undo, move, late, threat, node.alpha,
                                         node.bestMove != NoMove);
    if (result.kind == MoveResult::Stopped) return 0;
    if (result.kind == MoveResult::Pruned) {
      if (node.best < result.score) {
        node.best = result.score;
        node.bestMove = move;
      }
      continue;
    }
    if (const Verdict score = takeScore(worker, node, move, result.score)) return score;
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
  // 3. The table.
  if ((node.flags & (CutNode | NullOk)) == (CutNode | NullOk) && !node.inCheck)
    worker.tt.prefetchChild(board, NoMove);
  if (const Verdict score = probeTable(worker, node)) return *score;
  if (node.ply > DeepestPly) return evaluated(worker.evaluator, node.eval);
  // 4. Mate distance.
  if (const Verdict score = pruneByMateDistance(node)) return *score;
  // 5. Static null move.
  if (const Verdict score = cutStatically(worker, node)) return *score;
  // 6. Null move.
  node.undo = board;
  if (const Verdict score = cutByNullMove(worker, node)) return *score;
  // 7. Internal deepening.
  node.newDepth = node.depth - 1 + (node.inCheck ? 1 : 0);
  if (const Verdict score = deepenInternally(worker, node)) return *score;
  // 8. The hash move.
  if (const Verdict score = searchHashMove(worker, node)) return *score;
  // 9. The other moves.
  NodeMoves moves;
  if (const Verdict score = prepareMoves(worker, node, moves)) return *score;
  if (const Verdict score = searchMoves(worker, node, moves)) return *score;
  // 10. The result.
  return finishNode(worker, node);
}

}  // namespace

int search(Worker& worker, int ply, int depth, int alpha, int beta, unsigned flags) {
  // 1. The end of the search, or of the depth.
  if (worker.isUnwinding()) return 0;
  if (depth < 1) {
    ++worker.stats.frontierNodes;
    return qsearch(worker, ply, QuiescenceCheckDepth, alpha, beta, flags | InQuiescence);
  }
  ++worker.stats.nodes;
  if (worker.stats.nodes % PollNodes == 0 && pollLimits(worker)) return 0;
  worker.selDepth = std::max(worker.selDepth, ply);
  // 2. Draws.
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
  if (threat == Threatens && alpha < DecisiveScore && see(worker.board, move) < 0)
    threat = NoThreat;
  if (late && node.futilityLimit < alpha && isQuiet(move) && threat == NoThreat) {
    ++worker.stats.pruned;
    return {MoveResult::Pruned, node.futilityLimit};
  }
  makeForSearch(worker, move);
  const int depth = extendedDepth(worker, node, move, node.newDepth);
  const auto searchChild = [&](int d, int low, int high, unsigned flags) {
    return -search(worker, node.ply + 1, d, -high, -low, flags);
  };
  int score = alpha + 1;
  if (depth > 0 && threat == NoThreat && late) {
    score = searchChild(depth - node.reduction, alpha, alpha + 1, Reduced | CutNode | NullOk);
  }
  if (score > alpha && !worker.isUnwinding()) {
    if ((node.flags & PvNode) != 0) {
      if (hasBestMove) score = searchChild(depth, alpha, alpha + 1, CutNode | NullOk);
      if (!hasBestMove || (score > alpha && !worker.isUnwinding())) {
        score = searchChild(depth, alpha, node.beta, PvNode);
      }
    } else {
      const unsigned flags = hasBestMove ? CutNode | NullOk : oppositeNode(node.flags);
      score = searchChild(depth, alpha, node.beta, flags);
    }
  }
  unmakeMove(worker.board, move, undo);
  if (worker.isUnwinding()) return {MoveResult::Stopped, 0};
  return {MoveResult::Searched, score};
}

}  // namespace quill
