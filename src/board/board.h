// The position record. Every search thread owns one; the first thread's holds the game's position.
//
// A Board keeps the position twice, as bitboards by colour and type and as a byte for each square,
// together with its Zobrist keys, a material signature for each side, the attack information that
// move generation and the search read, and two stacks (moves and keys) for finding repetitions and
// replaying lines. Everything is plain data. A Board belongs to one thread at a time.
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
  //
  //   bits   field    meaning
  //   0-7    points   knight and bishop 3, rook 5, queen 10; pawns do not count
  //   8-11   pawns    how many
  //   12-15  knights  how many
  //   16-19  bishops  how many
  //   20-23  rooks    how many
  //   24-27  queens   how many
  //   28-31  pieces   how many of the last four together
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

// The state that unmakeMove cannot recompute. A caller copies it out of the Board before makeMove
// (`UndoInfo undo = board;`) and hands the copy to unmakeMove.
struct UndoInfo {
  std::uint64_t pawnKey;  // XOR of the keys of all pawns of both colours
  // Every square that the side not to move attacks, computed without the king of the side to move,
  // so that it can't step back along a slider's line. Valid after updateAttackInfo.
  Bitboard enemyAttacks;
  // blockers[c]: the pieces of either colour that stand alone between c's king and an enemy slider
  // on a common line: c's pinned pieces and the enemy's discovered-check candidates. They are valid
  // after updateAttackInfo, too.
  std::array<Bitboard, 2> blockers;
  // The ply of the last capture, pawn move or null move; ply - lastIrreversible is the fifty-move
  // count. Negative only after rebaseStacks has cut a quiet stretch that is longer than it keeps.
  std::int32_t lastIrreversible;
  std::uint8_t castling;  // WhiteShort 1, BlackShort 2, WhiteLong 4, BlackLong 8
  // The pawn that has just made a double step: the square where it stands, not the one it passed
  // over; 0 for none. makeMove sets it only when an enemy pawn stands beside that pawn; setFen
  // believes the text.
  std::uint8_t epSquare;
};

struct Board : Placement, UndoInfo {
  Colour stm;     // side to move
  int ply;        // index of the top of both stacks
  int plyOffset;  // plies that rebaseStacks dropped, always even
  // moves[p] led to ply p; 0 for a null move and for the start of the game.
  std::array<Move, StackSize> moves;
  // keys[p] is the key at ply p, written when a move is made from there.
  std::array<std::uint64_t, StackSize> keys;

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

// Makes room on the stacks when a long game has nearly filled them. The entries since
// lastIrreversible stay, but at least the two dozen that the display shows and at most 512, far
// more than the hundred that the draw rules need. The parity of ply and gamePly() do not change.
// To be called before each move of the game; does nothing while a search still has room.
void rebaseStacks(Board& board);

// Stack entries above the game's moves that stay free for a search.
inline constexpr int SearchHeadroom = 256;

// Checks a Board against values computed from its squares alone; enemyAttacks and blockers are not
// checked. For asserts and tests.
bool isConsistent(const Board& board);

struct CastleInfo {
  Bitboard emptyMask;  // squares that must be empty
  Bitboard safeMask;   // the king's origin, crossed square and destination: must not be attacked
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

// The start position, its empty ranks written as empty fields.
inline constexpr char StartPosition[] = "rnbqkbnr/pppppppp/////PPPPPPPP/RNBQKBNR w KQkq - -";

}  // namespace quill
