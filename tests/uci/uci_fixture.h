// An engine of the test's own, driven by protocol lines, with all its output captured.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "board/fen.h"
#include "book/book_selector.h"
#include "eval/weights.h"
#include "search/tt.h"
#include "smp/thread_pool.h"
#include "support/capture.h"
#include "time/time_control.h"
#include "uci/uci.h"

namespace quill::test {

class UciTest : public testing::Test {
 protected:
  UciTest() {
    pool.setThreadCount(1);
    setFen(pool.board(), StartPosition);
  }

  // A test may leave a search behind.
  ~UciTest() override { pool.stopAll(); }

  // Handles one line as the console does; tells whether it was the protocol's.
  bool send(const std::string& line) {
    const std::size_t blank = line.find(' ');
    const std::string word = line.substr(0, blank);
    const std::string rest = blank == std::string::npos ? "" : line.substr(blank + 1);
    return uci.dispatch(word.c_str(), rest.c_str());
  }

  // Begins a search of the start position, as "go" does with the parameters.
  void startSearch(const std::string& parameters) {
    send("position startpos");
    send("go " + parameters);
  }

  void waitForTheEnd() { pool.waitIdle(); }

  // What came out since the last call: protocol lines, log lines, lines on standard error.
  std::string out() { return output.take(); }
  std::string logged() { return logLines.take(); }
  std::string errors() { return errorLines.take(); }

  // The "bestmove" lines since the last call.
  std::vector<std::string> answers() {
    std::vector<std::string> lines;
    const std::string text = out();
    for (std::size_t at = 0; (at = text.find("bestmove", at)) != std::string::npos;) {
      const std::size_t end = text.find('\n', at);
      lines.push_back(text.substr(at, end - at));
      at = end;
    }
    return lines;
  }

  std::string fen() { return getFen(pool.board()).text(); }

  Capture output;
  LogCapture logLines;
  StreamCapture errorLines{stderr};
  EvalTables evalTables;
  Tt tt;
  TimeControl timeControl;
  ThreadPool pool{tt, timeControl, evalTables};
  Book book;
  BookSelector selector{book, 1};
  Uci uci{pool, evalTables, book, selector, output.stream()};
};

}  // namespace quill::test
