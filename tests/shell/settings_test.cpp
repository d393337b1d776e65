#include "shell/settings.h"

#include <gtest/gtest.h>

#include <string>

#include "support/capture.h"

namespace quill::test {
namespace {

// What dump says after loading a file with the given bytes.
std::string loaded(const std::string& bytes) {
  const TestFolder folder;
  Settings settings;
  EXPECT_TRUE(settings.load(folder.write("quill.ini", bytes).c_str()));
  Capture out;
  settings.dump(out.stream());
  return out.text();
}

TEST(Settings, LinesAreReadAsKeysAndValues) {
  EXPECT_EQ(loaded("  book.file  =  my.bbk  \n"), "book.file=my.bbk\n");
  EXPECT_EQ(loaded("a=b=c d\nb=\tb\n=x\n"), "a=b=c d\nb=\tb\n=x\n");
  EXPECT_EQ(loaded("a=1\n\xff\xfe=\x80\n"), "a=1\n\xff\xfe=\x80\n");
  // Comments and incomplete lines are skipped; every kind of line end ends a line.
  EXPECT_EQ(loaded("#a=1\n\nword\nb=\nc= \n #d=2\n"), "c=\n#d=2\n");
  EXPECT_EQ(loaded("a=1\nb=2\r\nc=3\rd=4\n\re=5\r\n\r\nf=6"), "a=1\nb=2\nc=3\nd=4\ne=5\nf=6\n");
  // A later value wins at the first place.
  EXPECT_EQ(loaded("a=1\nb=2\nA=3\na=4\n"), "a=4\nb=2\nA=3\n");
}

TEST(Settings, ZeroBytesAreEndured) {
  using namespace std::string_literals;
  const LogCapture quiet;
  EXPECT_EQ(loaded("\0\0a=1\n"s), "");
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
}  // namespace quill::test
