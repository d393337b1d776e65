// All objects that live as long as the program, built in one place and passed to their users.
#pragma once

#include "book/book.h"
#include "book/book_selector.h"
#include "eval/weights.h"
#include "search/tt.h"
#include "shell/move_history.h"
#include "shell/settings.h"
#include "smp/thread_pool.h"
#include "time/time_control.h"
#include "uci/names.h"
#include "uci/uci.h"

namespace quill {

// Members refer only to members above them. Requires: the tables of board/ are built.
struct Engine {
  // The seed is for the book's choices.
  explicit Engine(std::uint32_t bookSeed)
      : pool(tt, timeControl, evalTables),
        bookSelector(book, bookSeed),
        uci(pool, evalTables, book, bookSelector, stdout) {}

  Settings settings;
  EvalTables evalTables;
  Tt tt;
  TimeControl timeControl;
  ThreadPool pool;
  MoveHistory history;  // of the pool's board
  Book book;
  BookSelector bookSelector;
  Uci uci;
};

}  // namespace quill
