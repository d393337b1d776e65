#include "shell/settings.h"

#include <gtest/gtest.h>

#include <string>

#include "support/capture.h"

namespace quill {
namespace {

using test::Capture;
using test::TestFolder;

// What dump says after loading a file with the given bytes.
std::string loaded(const std::string& bytes) {
  const TestFolder folder;
  Settings settings;
  EXPECT_TRUE(settings.load(folder.write("quill.ini", bytes).c_str()));
  Capture out;
  settings.dump(out.stream());
  return out.text();
}

TEST(Settings, ReadsKeyAndValueWithoutTheBlanksAround) {
  EXPECT_EQ(loaded("  book.file  =  my.bbk  \n"), "book.file=my.bbk\n");
  EXPECT_EQ(loaded("a=b=c d\n"), "a=b=c d\n");
  EXPECT_EQ(loaded("a=\tb\n"), "a=\tb\n");
  EXPECT_EQ(loaded("=x\n"), "=x\n");
}

TEST(Settings, SkipsCommentsAndIncompleteLines) {
  EXPECT_EQ(loaded("#a=1\n\nword\nb=\nc= \n #d=2\n"), "c=\n#d=2\n");
}

TEST(Settings, EveryKindOfLineEndEndsALine) {
  EXPECT_EQ(loaded("a=1\nb=2\r\nc=3\rd=4\n\re=5\r\n\r\nf=6"), "a=1\nb=2\nc=3\nd=4\ne=5\nf=6\n");
}

TEST(Settings, ALaterValueWinsAtTheFirstPlace) {
  EXPECT_EQ(loaded("a=1\nb=2\nA=3\na=4\n"), "a=4\nb=2\nA=3\n");
}

TEST(Settings, LinesMayBeOfAnyLength) {
  for (const std::size_t n : {60, 62, 63, 64, 124, 125, 126, 127, 128, 255, 1000, 1 << 20}) {
    const std::string value(n, 'v');
    EXPECT_EQ(loaded("k=" + value + "\r\nl=1\n"), "k=" + value + "\nl=1\n") << n;
    EXPECT_EQ(loaded("k=" + value), "k=" + value + "\n") << n;
  }
}

TEST(Settings, AnyBytesAreTaken) {
  const test::LogCapture quiet;
  using namespace std::string_literals;
  EXPECT_EQ(loaded("\0\0a=1\n"s), "");
  EXPECT_EQ(loaded("a=1\n\xff\xfe=\x80\n"), "a=1\n\xff\xfe=\x80\n");
  loaded("a=1\0b\nc=2\n"s);
  std::string zeros;
  for (int i = 0; i < 100'000; ++i) zeros += "a\0\n"s;
  loaded(zeros);
}

TEST(Settings, AFileOfManyKeysLoadsQuickly) {
  std::string bytes;
  for (int i = 0; i < 200'000; ++i) bytes += std::to_string(i) + "=1\n";
  EXPECT_EQ(loaded(bytes), bytes);
}

TEST(Settings, AMissingFileOrADirectoryIsNotLoaded) {
  Settings settings;
  EXPECT_FALSE(settings.load("/nowhere/quill.ini"));
  EXPECT_FALSE(settings.load("."));
}

TEST(Settings, ValuesAreSharedAndDefaultsServe) {
  Settings settings;
  settings.set(EngineString("k"), EngineString("v"));
  EXPECT_STREQ(settings.getString("k", "d"), "v");
  EXPECT_STREQ(settings.getString("x", "d"), "d");
  EXPECT_EQ(settings.getString("x", nullptr), nullptr);
  const EngineString value = settings.getValue("k");
  EXPECT_EQ(value.refs(), 2);
  EXPECT_STREQ(settings.getValue("x", "d").text(), "d");
  EXPECT_TRUE(settings.getValue("x").isEmpty());
}

}  // namespace
}  // namespace quill
