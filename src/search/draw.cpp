#include "search/draw.h"

#include <algorithm>

#include "board/attacks.h"
#include "search/node.h"

namespace quill {

namespace {

constexpr int FiftyMovePlies = 99;  // more quiet plies than this draw

// The side to move can go back to where it came from, the opponent having gone back itself: the
// position before their two moves comes up again. The move back is the line.
bool canGoBack(Worker& worker, int ply, int beta) {
  const Board& board = worker.board;
  if (beta > DrawScore || ply <= 2 || board.quietPlies() <= 2) return false;
  const Move last = board.moves[board.ply];
  const Move own = board.moves[board.ply - 1];
  const Move first = board.moves[board.ply - 2];
  if (fromOf(last) != toOf(first) || toOf(last) != fromOf(first)) return false;
  if (isCastling(own) || contains(between[fromOf(own)][toOf(own)], fromOf(first))) return false;
  const Move back = makeQuiet(toOf(own), fromOf(own));
  if (back == NoMove) return false;
  setLine(worker, ply, back);
  return true;
}

// At most one minor piece on each side and nothing else.
bool hasInsufficientMaterial(const Board& board) {
  constexpr std::uint32_t PawnsRooksQueens = 0x0FF00F00;
  constexpr int MostPoints = 4;
  const std::uint32_t white = board.side[White].material;
  const std::uint32_t black = board.side[Black].material;
  return ((white | black) & PawnsRooksQueens) == 0 && materialPoints(white) <= MostPoints &&
         materialPoints(black) <= MostPoints;
}

// One earlier occurrence draws inside the tree; close to the root, where the game's own history is
// near, it takes two.
bool isRepetition(const Board& board, int ply) {
  int needed = ply > 2 ? 1 : 2;
  const int oldest = std::max(board.lastIrreversible, 0);
  for (int i = board.ply - 4; i >= oldest; i -= 2) {
    if (board.keys[i] != board.key) continue;
    if (--needed == 0) return true;
    i -= 2;  // the position can't come back sooner than four plies later
  }
  return false;
}

}  // namespace

bool isDrawByRule(Worker& worker, int ply, int beta) {
  const Board& board = worker.board;
  // Most nodes of the quiescence search come just after a capture: nothing can repeat there.
  if (board.quietPlies() <= 2) return hasInsufficientMaterial(board);
  return canGoBack(worker, ply, beta) || board.quietPlies() > FiftyMovePlies ||
         hasInsufficientMaterial(board) || isRepetition(board, ply);
}

}  // namespace quill
