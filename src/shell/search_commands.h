// The console commands that use the book, the search and the clock.
//
// A command gets the text after its word, which may begin with blanks.
// Requires: no search runs, but for "mt".
#pragma once

namespace quill {

struct Engine;

// "book": the book's candidates for the position.
void bookCommand(Engine& engine, const char* rest);
// "g [tt]": searches the position with the budgets in force and waits for the end; "tt" keeps the
// contents of the transposition table. Before "uci", an interrupt (Ctrl-C) ends the search.
void searchCommand(Engine& engine, const char* rest);
// "mt [seconds]": sets the time of all following searches, and shows it.
void moveTimeCommand(Engine& engine, const char* rest);
// "bench": searches fixed positions and tells its speed; changes nothing of the engine.
void benchCommand(Engine& engine, const char* rest);

}  // namespace quill
