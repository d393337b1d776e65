#include "shell/console.h"

#include <gtest/gtest.h>

#include "shell/board_commands.h"
#include "shell/startup.h"
#include "support/capture.h"

namespace quill::test {
namespace {

// The lines that are read from a file with the given bytes.
std::vector<std::string> linesOf(const std::string& bytes, std::size_t limit) {
  const TestFolder folder;
  std::FILE* in = std::fopen(folder.write("input", bytes).c_str(), "rb");
  InputLines input(in);
  std::vector<std::string> lines;
  for (std::string line; input.next(line, limit);) lines.push_back(line);
  std::fclose(in);
  return lines;
}

using Lines = std::vector<std::string>;

TEST(InputLines, TextsAreCutAtNewlinesZeroBytesAndTheLimit) {
  using namespace std::string_literals;
  EXPECT_EQ(linesOf("  a b  \n\tc\r\n   \n\nlast", 100), (Lines{"a b", "\tc\r", "", "", "last"}));
  EXPECT_EQ(linesOf("abcdefgh\nij\n", 4), (Lines{"abcd", "efgh", "", "ij"}));
  EXPECT_EQ(linesOf("ab \0cd\nef\n\0\n"s, 100), (Lines{"ab", "ef", ""}));
}

TEST(Console, TellsMovesAndPositionsByTheirCharacters) {
  EXPECT_TRUE(isMoveLine("e2e4", "") && isMoveLine("e8=Q+", "O-O"));
  for (const char* word : {"e", "0-0", ""}) EXPECT_FALSE(isMoveLine(word, "")) << word;
  EXPECT_FALSE(isMoveLine("e2e4", " e7e5"));
  EXPECT_TRUE(isPositionLine("4k3/8/////8/4K3"));
  for (const char* word : {"4k3", "4k3/4k3/4K3", "8/4K3", "4k3/4K3/9", "", "4k3/4K3,"}) {
    EXPECT_FALSE(isPositionLine(word)) << word;
  }
}

TEST(StartUp, AProcessorWithoutTheInstructionsIsRefused) {
  StreamCapture errors(stderr);
  EXPECT_EQ(checkProcessor(true, true), 0);
  EXPECT_EQ(errors.take(), "");
  EXPECT_EQ(checkProcessor(false, false), -1);
  EXPECT_EQ(errors.take(), "Cannot start: hardware does not support SSE2\n");
  EXPECT_EQ(checkProcessor(true, false), -2);
  EXPECT_EQ(errors.take(), "Cannot start: hardware does not support POPCNT\n");
}

}  // namespace
}  // namespace quill::test
