// Text helpers: a reference-counted string, numbers from text, and the words of a command line.
//
// Threads: reference counts are not atomic; a block must not be shared between threads.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quill {

// A byte string whose copies share one heap block until one of them is appended to. A default
// string has no block and reads as "". Lengths are signed 32-bit numbers.
// On failure: without memory, the program writes "malloc failed" or "realloc failed" to standard
// output and aborts.
class EngineString {
 public:
  EngineString() = default;
  // A copy of the text; a null text gives an empty string with a block of its own.
  explicit EngineString(const char* text);
  // A block of the given size holding the first size - 1 characters of text and a terminator.
  static EngineString makeN(const char* text, std::int32_t size);
  EngineString(const EngineString& other);
  EngineString(EngineString&& other) noexcept;
  EngineString& operator=(const EngineString& other);
  EngineString& operator=(EngineString&& other) noexcept;
  ~EngineString();

  // Appends n characters; does nothing when text is null or n is not positive.
  EngineString& append(const char* text, std::int32_t n);
  EngineString& appendText(const char* text);
  EngineString& appendChar(char c);
  EngineString& appendInt(int value);

  // The characters from start up to, but not including, min(end, length).
  EngineString substring(std::int32_t start, std::int32_t end) const;

  const char* text() const;  // 0-terminated
  std::int32_t length() const;
  bool isEmpty() const { return length() == 0; }
  // Strings that share the block, 0 without one.
  std::int32_t refs() const;

 private:
  struct Block;
  void release();
  Block* block_ = nullptr;
};

// Compares the texts without regard to the case of ASCII letters.
bool equalsIgnoreCase(std::string_view a, std::string_view b);

// The decimal number that the text begins with (blanks and a sign may precede it), 0 when there is
// none; a number beyond the type's range becomes the nearest one in it.
std::int32_t parseInt(std::string_view text);
std::int64_t parseInt64(std::string_view text);

// Appends printf-style text of up to 127 characters; what is longer is cut off.
[[gnu::format(printf, 2, 3)]] void appendFormat(std::string& text, const char* format, ...);

// Gives the words of a command line one by one; blanks and tabs separate them.
class Tokenizer {
 public:
  // Begins with the rest of a command line; leading separators are dropped. The text is not copied:
  // it must stay as it is while words are taken from it.
  void setArgs(const char* text);
  // Skips the next pos characters and the separators after them.
  void dropLeading(std::int32_t pos);
  // The next word, empty when none is left; a part of the command line.
  std::string_view nextWord();
  // The same as a string of its own.
  EngineString nextToken();
  // parseInt of the next word, or the default when there is none.
  std::int32_t nextInt(std::int32_t defaultValue);
  bool argsLeft() const { return *rest_ != '\0'; }
  // What has not been consumed yet.
  const char* rest() const { return rest_; }

 private:
  const char* rest_ = "";
};

}  // namespace quill
