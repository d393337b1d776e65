// The console commands on the board: set and show a position, pass, take moves back, list moves and
// count move trees, play moves and set positions that are typed as whole lines.
//
// A command gets the text after its word, which may begin with blanks.
// Requires: no search runs.
#pragma once

namespace quill {

struct Engine;

// "fen [text]": sets the position if there is a text, then shows the board.
void fenCommand(Engine& engine, const char* rest);
// "%": passes the turn.
void passCommand(Engine& engine, const char* rest);
// "d": shows the board.
void showCommand(Engine& engine, const char* rest);
// "new": sets the start position and shows the board.
void newCommand(Engine& engine, const char* rest);
// "undo": takes the last move back that was typed or passed, and shows the board.
void undoCommand(Engine& engine, const char* rest);
// "moves": lists the legal moves.
void movesCommand(Engine& engine, const char* rest);
// "divide [depth]": counts the move sequences for each move. "perft [depth]": counts them all, and
// shows the speed.
void divideCommand(Engine& engine, const char* rest);
void perftCommand(Engine& engine, const char* rest);

// Whether a line has at least two characters, all of them such as moves are written with.
bool isMoveLine(const char* word, const char* rest);
// Plays the move that the word means and shows the board.
void playTypedMove(Engine& engine, const char* word);

// Whether a line's first word looks like the squares of a FEN text.
bool isPositionLine(const char* word);
void setTypedPosition(Engine& engine, const char* word, const char* rest);

}  // namespace quill
