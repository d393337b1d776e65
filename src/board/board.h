// The position record that the console and every search thread own a copy of.
//
// A Board keeps the position twice, as bitboards by colour and type and as a byte for each square,
// with its Zobrist keys, a material signature for each side, the attack information that move
// generation and the search read, and two stacks (moves and keys) by which repetitions are found
// and lines are replayed. Everything is plain data. A Board belongs to one thread at a time.
#pragma once

#include <array>

#include "board/codes.h"
#include "board/move.h"

namespace quill {

// Entries of the move and key stacks of a Board.
inline constexpr int StackSize = 1024;

// What one side has on the board.
struct Side {
  std::array<Bitboard, 7> bb;  // by piece type; bb[0] is the union of all pieces of the side
  Square kingSquare;           // the single square of bb[King]
  // Material signature, the sum of MaterialIncrement over the side's pieces:
  //   bits 0-7    points without pawns (knight and bishop 3, rook 5, queen 10)
  //   bits 8-11   pawns        bits 12-15  knights      bits 16-19  bishops
  //   bits 20-23  rooks        bits 24-27  queens       bits 28-31  pieces other than pawns and
  //   king
  std::uint32_t material;
};

inline constexpr std::array<std::uint32_t, 8> MaterialIncrement = {
    0, 0x100, 0x10001003, 0x10010003, 0x10100005, 0x1100000A, 0, 0};

constexpr int materialPoints(std::uint32_t signature) { return static_cast<int>(signature & 0xFF); }
constexpr int pawnCount(std::uint32_t signature) { return static_cast<int>((signature >> 8) & 15); }
constexpr int knightCount(std::uint32_t signature) {
  return static_cast<int>((signature >> 12) & 15);
}
constexpr int bishopCount(std::uint32_t signature) {
  return static_cast<int>((signature >> 16) & 15);
}
constexpr int rookCount(std::uint32_t signature) {
  return static_cast<int>((signature >> 20) & 15);
}
constexpr int queenCount(std::uint32_t signature) {
  return static_cast<int>((signature >> 24) & 15);
}
constexpr int pieceCount(std::uint32_t signature) {
  return static_cast<int>((signature >> 28) & 15);
}

// The pieces themselves, and what is derived from them alone.
struct Placement {
  std::array<Side, 2> side;
  std::array<PieceCode, 64> squares;  // code of the piece on each square, 0 when empty
  Bitboard occupied;                  // side[0].bb[0] | side[1].bb[0]
  // XOR of the keys of all pieces, of the castling rights and of the en-passant file. It has no
  // side-to-move term: two positions that differ only in the side to move share it.
  std::uint64_t key;
};

// The state that unmakeMove cannot recompute. A caller copies it out of the Board (`UndoInfo undo =
// board;`) before makeMove and hands the copy to unmakeMove.
struct UndoInfo {
  std::uint64_t pawnKey;  // XOR of the keys of all pawns of both colours
  // Every square that the side not to move attacks, with the king of the side to move taken off the
  // board, so that a king can't step back along a slider's line. Valid after updateAttackInfo.
  Bitboard enemyAttacks;
  // blockers[c]: the pieces of either colour that stand alone between c's king and an enemy slider
  // on a common line: c's pinned pieces and the enemy's discovered-check candidates. Valid like
  // enemyAttacks.
  std::array<Bitboard, 2> blockers;
  // The ply of the last capture, pawn move or null move; ply - lastIrreversible is the fifty-move
  // count. Below 0 only after rebaseStacks cut off a quiet stretch longer than what it keeps.
  std::int32_t lastIrreversible;
  std::uint8_t castling;  // WhiteShort 1, BlackShort 2, WhiteLong 4, BlackLong 8
  // Square of the pawn itself that has just made a double step, not the square that it passed; 0
  // for none. makeMove sets it only when an enemy pawn stands beside it; setFen takes what the text
  // claims.
  std::uint8_t epSquare;
};

struct Board : Placement, UndoInfo {
  Colour stm;                         // side to move
  int ply;                            // index of the top of both stacks
  int plyOffset;                      // plies that rebaseStacks dropped, always even
  std::array<Move, StackSize> moves;  // moves[p] led to ply p; moves[0] is 0, a null move is 0
  std::array<std::uint64_t, StackSize> keys;  // key at ply p, written when the move from p is made

  Board() { clear(); }
  Board(const Board& other) { copyFrom(other); }
  Board& operator=(const Board& other) {
    copyFrom(other);
    return *this;
  }

  // Zeroes everything: no pieces, White to move, empty stacks.
  void clear();

  // Puts a piece on an empty square and keeps keys, sets and signature in step.
  // On failure: a square outside 0..63 writes one line to standard error and adds nothing.
  void add(Colour colour, int type, Square square);

  // Makes this Board equal to the other; of the stacks only the used parts are copied.
  void copyFrom(const Board& other);

  const Side& own() const { return side[static_cast<unsigned>(stm)]; }
  const Side& enemy() const { return side[static_cast<unsigned>(stm ^ 1)]; }
  // Plies since the last capture, pawn move or null move.
  int quietPlies() const { return ply - lastIrreversible; }
  // Moves made since the position was set, whatever rebaseStacks dropped.
  int gamePly() const { return ply + plyOffset; }
  // Requires: valid attack information.
  bool isInCheck() const { return contains(enemyAttacks, own().kingSquare); }
};

// Makes room on the stacks when a long game has nearly filled them: keeps the entries since
// lastIrreversible (at most 512; far more than the hundred that the draw rules look at), at least
// the two dozen that the display shows, and the parity of ply. gamePly() does not change. To be
// called before each move that is played on a game's Board; does nothing while there is room enough
// for a search.
void rebaseStacks(Board& board);

// Stack entries that stay free for a search behind a game's moves.
inline constexpr int SearchHeadroom = 256;

// Checks all invariants of a Board against values computed from its squares alone, those of
// enemyAttacks and blockers left out. For asserts and tests.
bool isConsistent(const Board& board);

struct CastleInfo {
  Bitboard emptyMask;  // squares that must be empty
  Bitboard safeMask;   // king's origin, crossed square and destination: must not be attacked
  Square kingFrom;
  Square kingTo;
  Square rookFrom;
  Square rookTo;
};

enum Wing : int { LongWing = 0, ShortWing = 1 };

// By [colour][wing].
inline constexpr CastleInfo CastleTable[2][2] = {
    {{0x0E, 0x1C, E1, C1, A1, D1}, {0x60, 0x70, E1, G1, H1, F1}},
    {{0x0E00000000000000, 0x1C00000000000000, E8, C8, A8, D8},
     {0x6000000000000000, 0x7000000000000000, E8, G8, H8, F8}}};

// The wing of a castling move or of its destination square.
constexpr Wing wingOf(Move move) { return fileOf(toOf(move)) < 4 ? LongWing : ShortWing; }

// The start position as the engine stores it: empty ranks as empty fields.
inline constexpr char StartPosition[] = "rnbqkbnr/pppppppp/////PPPPPPPP/RNBQKBNR w KQkq - -";

}  // namespace quill
