// The console commands that use the engine's services.
//
// A command gets the text behind its word, which may begin with blanks. Requires, for all but "mt":
// no search runs.
#pragma once

namespace quill {

struct Engine;

// "book": the book's candidates for the position.
void bookCommand(Engine& engine, const char* rest);
// "g [tt]": searches the position with the budgets in force and waits for the end; "tt" keeps what
// the table knows.
void searchCommand(Engine& engine, const char* rest);
// "mt [seconds]": sets the time of every search to come, and shows it.
void moveTimeCommand(Engine& engine, const char* rest);

}  // namespace quill
