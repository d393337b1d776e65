#include "shell/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>

namespace quill::test {
namespace {

TEST(Text, BlocksAreSharedUntilOneIsChanged) {
  EngineString a("one");
  EngineString b("two");
  a = b;
  EXPECT_EQ(b.refs(), 2);
  b.appendChar('d');
  EXPECT_STREQ(a.text(), "two");
  EXPECT_STREQ(b.text(), "twod");
  EXPECT_EQ(a.refs(), 1);
  EXPECT_EQ(b.refs(), 1);
  const EngineString& same = a;
  a = same;
  EXPECT_STREQ(a.text(), "two");
  b = EngineString();
  EXPECT_EQ(b.refs(), 0);
  EXPECT_STREQ(b.text(), "");
}

TEST(Text, BuildsStepByStep) {
  EngineString s;
  s.appendText("x").appendInt(INT_MIN).append("yz!", 2).append("no", 0).append("no", -1);
  s.append(nullptr, 3).appendText(nullptr);
  EXPECT_STREQ(s.text(), "x-2147483648yz");
  EXPECT_EQ(s.length(), 14);
}

TEST(Text, AStringMayBeAppendedToItself) {
  EngineString s("ab");
  std::string expected = "ab";
  for (int i = 0; i < 12; ++i, expected += expected) s.appendText(s.text());
  EXPECT_EQ(s.text(), expected);
}

TEST(Text, PartsAreClamped) {
  const EngineString s("hello");
  EXPECT_STREQ(s.substring(1, 3).text(), "el");
  EXPECT_STREQ(s.substring(3, 99).text(), "lo");
  for (const auto& [start, end] : {std::pair{5, 9}, {9, 12}, {3, 3}, {4, 2}, {0, -1}}) {
    EXPECT_TRUE(s.substring(start, end).isEmpty()) << start << ' ' << end;
  }
  EXPECT_STREQ(EngineString::makeN("hello", 4).text(), "hel") << "the terminator counts";
  EXPECT_EQ(EngineString::makeN("hello", 1).length(), 0);
  EXPECT_EQ(EngineString(nullptr).refs(), 1);
}

TEST(Text, LetterCaseIsIgnoredForLettersOnly) {
  EXPECT_TRUE(equalsIgnoreCase("UciNewGame", "ucinewgame"));
  for (const auto& [a, b] : {std::pair{"uci", "ucin"}, {"ucin", "uci"}, {"[", "{"}}) {
    EXPECT_FALSE(equalsIgnoreCase(a, b)) << a << ' ' << b;
  }
}

TEST(Text, NumbersSaturate) {
  EXPECT_EQ(parseInt("12abc"), 12);
  EXPECT_EQ(parseInt("  -7"), -7);
  EXPECT_EQ(parseInt("+3"), 3);
  EXPECT_EQ(parseInt("abc"), 0);
  EXPECT_EQ(parseInt("+-3"), 0);
  EXPECT_EQ(parseInt("99999999999999999999999"), INT_MAX);
  EXPECT_EQ(parseInt("-2147483649"), INT_MIN);
  EXPECT_EQ(parseInt64("-99999999999999999999999"), INT64_MIN);
  EXPECT_EQ(parseInt64("4294967296"), 4294967296);
}

TEST(Tokenizer, HandsOutWordsBetweenBlanksAndTabs) {
  Tokenizer words;
  words.setArgs(" \t a  b\tc ");
  for (const char* expected : {"a", "b", "c"}) {
    EXPECT_TRUE(words.argsLeft());
    EXPECT_STREQ(words.nextToken().text(), expected);
  }
  EXPECT_FALSE(words.argsLeft());
  EXPECT_TRUE(words.nextToken().isEmpty());
}

TEST(Tokenizer, TheRestStandsAsItWasWritten) {
  Tokenizer words;
  words.setArgs("value  a  b");
  words.nextToken();
  EXPECT_STREQ(words.rest(), "a  b");
  words.dropLeading(1);
  EXPECT_STREQ(words.rest(), "b");
  words.dropLeading(99);
  EXPECT_STREQ(words.rest(), "");
}

TEST(Tokenizer, NumbersFallBackToTheDefaultOnlyAtTheEnd) {
  Tokenizer words;
  words.setArgs("12abc abc -5");
  for (const int expected : {12, 0, -5, 9}) EXPECT_EQ(words.nextInt(9), expected);
}

}  // namespace
}  // namespace quill::test
