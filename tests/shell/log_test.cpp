#include "shell/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/capture.h"
#include "support/regex.h"

namespace quill::test {
namespace {

TEST(Log, WritesToItsStreamUntilSwitchedOff) {
  LogCapture captured;
  log("a=%i", 5);
  log("b\n");
  EXPECT_EQ(captured.text(), "a=5b\n");
  logOff();
  log("lost\n");
  trace("lost");
  flushLog();
  EXPECT_EQ(logStream(), nullptr);
  EXPECT_EQ(captured.text(), "a=5b\n");
}

TEST(Log, TraceLinesBeginWithTenDigits) {
  LogCapture captured;
  trace("go", "depth 5");
  trace("one");
  trace(nullptr);
  EXPECT_THAT(captured.text(), MatchesRegex("[0-9]{10}:godepth 5\n[0-9]{10}:one\n[0-9]{10}:\\?\n"));
}

}  // namespace
}  // namespace quill::test
