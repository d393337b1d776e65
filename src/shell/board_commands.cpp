#include "shell/board_commands.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>

#include "board/display.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/notation.h"
#include "board/perft.h"
#include "platform/clock.h"
#include "platform/cpu.h"
#include "shell/engine.h"
#include "shell/text.h"

namespace quill {

namespace {

constexpr char MoveCharacters[] = "NBRQKabcdefgh12345678x-=+oO";
constexpr char PositionCharacters[] = "PNBRQKpnbrqk12345678/";

bool holdsOnly(const char* text, const char* characters) {
  return text[std::strspn(text, characters)] == '\0';
}

// The depth of a counting command; 0 when there is nothing to do. Depths below 1 count as 1.
int readDepth(const Board& board, const char* command, const char* rest) {
  Tokenizer words;
  words.setArgs(rest);
  const int depth = words.nextInt(1);
  if (depth < StackSize - board.ply) return depth;
  std::fprintf(stderr, "%s: depth %i is too deep\n", command, depth);
  return 0;
}

// The move in algebraic notation, with "+" when it gives check and "#" when it mates.
std::string sanWithCheck(Board& board, Move move) {
  char san[MoveTextSize];
  moveToSan(board, san, move);
  std::string text = san;
  const UndoInfo undo = board;
  makeMove(board, move);
  updateAttackInfo(board);
  Move list[MaxMoves];
  if (board.isInCheck()) text += generateLegal(board, list) == list ? '#' : '+';
  unmakeMove(board, move, undo);
  return text;
}

}  // namespace

void fenCommand(Engine& engine, const char* rest) {
  Board& board = engine.pool.board();
  rest += std::strspn(rest, " ");
  if (*rest != '\0') setFen(board, rest);
  printBoard(board);
}

void passCommand(Engine& engine, const char* /*rest*/) {
  engine.history.play(engine.pool.board(), NoMove);
}

void showCommand(Engine& engine, const char* /*rest*/) { printBoard(engine.pool.board()); }

void newCommand(Engine& engine, const char* /*rest*/) {
  setFen(engine.pool.board(), StartPosition);
  printBoard(engine.pool.board());
}

void undoCommand(Engine& engine, const char* /*rest*/) {
  if (engine.history.takeBack(engine.pool.board())) {
    printBoard(engine.pool.board());
  } else {
    std::printf("no typed move to take back\n");
  }
}

void movesCommand(Engine& engine, const char* /*rest*/) {
  constexpr int Columns = 10;
  Board& board = engine.pool.board();
  Move list[MaxMoves];
  const auto moves = std::span(list, generateLegal(board, list));
  std::printf("%i legal moves", static_cast<int>(moves.size()));
  int column = 0;
  for (const Move move : moves)
    std::printf("%s%-8s", column++ % Columns == 0 ? "\n" : "", sanWithCheck(board, move).c_str());
  std::printf("\n");
}

void divideCommand(Engine& engine, const char* rest) {
  Board& board = engine.pool.board();
  const int depth = readDepth(board, "divide", rest);
  if (depth == 0) return;

  std::printf("----divide---\n");
  Move list[MaxMoves];
  const Move* end = generateLegal(board, list);
  const UndoInfo undo = board;
  double total = 0;
  for (const Move* move = list; move != end; ++move) {
    makeMove(board, *move);
    const double count =
        depth == 1 ? 1.0 : static_cast<double>(perft(board, std::max(depth, 0) - 1));
    unmakeMove(board, *move, undo);
    char text[MoveTextSize];
    moveToText(board, text, *move);
    std::printf("%-8s %10.0f\n", text, count);
    total += count;
  }
  std::printf("-------------------\ntotal    %10.0f\n", total);
}

void perftCommand(Engine& engine, const char* rest) {
  Board& board = engine.pool.board();
  const int depth = readDepth(board, "perft", rest);
  if (depth == 0) return;

  char label[32];
  std::snprintf(label, sizeof label, "perft %i", depth);
  const std::uint32_t startMs = platform::tickCountMs();
  const std::uint64_t startTicks = platform::readTimeStampCounter();
  const auto count = static_cast<double>(perft(board, depth));
  const auto ticks = static_cast<double>(platform::readTimeStampCounter() - startTicks);
  const auto ms = static_cast<double>(platform::tickCountMs() - startMs);
  // A division by 0 is fine here: it prints an infinite speed.
  std::printf("%-20s  %10.0f ops in %5.3f seconds  ops/ms=%7.0f,  ticks/op=%6.1f\n", label, count,
              ms / 1000.0, count / ms, ticks / count);
}

bool isMoveLine(const char* word, const char* rest) {
  const bool isLong = word[0] != '\0' && (word[1] != '\0' || *rest != '\0');
  return isLong && holdsOnly(word, MoveCharacters) && holdsOnly(rest, MoveCharacters);
}

void playTypedMove(Engine& engine, const char* word) {
  Board& board = engine.pool.board();
  const Move move = parseMove(board, word);
  if (move == NoMove) {
    std::printf("not a move: '%s'\n", word);
    return;
  }
  engine.history.play(board, move);
  printBoard(board);
}

bool isPositionLine(const char* word) {
  const char* end = word + std::strlen(word);
  return holdsOnly(word, PositionCharacters) && std::find(word, end, '/') != end &&
         std::count(word, end, 'k') == 1 && std::count(word, end, 'K') == 1;
}

void setTypedPosition(Engine& engine, const char* word, const char* rest) {
  setFen(engine.pool.board(), (std::string(word) + ' ' + rest).c_str());
  printBoard(engine.pool.board());
}

}  // namespace quill
