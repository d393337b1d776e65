// The characters of a text stream one by one, with their line numbers, for streams of any size and
// lines with any kind of end.
#pragma once

#include <cstdint>
#include <istream>
#include <string_view>
#include <vector>

namespace quill {

class TextSource {
 public:
  static constexpr int End = -1;

  // The stream must outlive the source.
  explicit TextSource(std::istream& in);

  // The next character, 0..255, or End. A carriage return, alone or with a line feed after it,
  // reads as a line feed.
  int peek();
  int get();

  // Whether this text comes next. Requires: a text of at most MaxLookAhead characters.
  bool startsWith(std::string_view text);

  void skipLine();

  // Line of the next character, counted from 1.
  std::uint64_t line() const { return line_; }
  // Whether the next character is the first of its line.
  bool atLineStart() const { return atLineStart_; }
  // Whether only blanks come before the next character on its line.
  bool onlyBlanksBefore() const { return onlyBlanks_; }

  // Bytes taken so far.
  std::uint64_t bytes() const { return bytes_; }

  static constexpr std::size_t MaxLookAhead = 32;

 private:
  // Makes sure that the next n characters are in the buffer. False when the stream ends before.
  bool fill(std::size_t n);

  std::istream& in_;
  std::vector<char> buffer_;
  std::size_t next_ = 0;
  std::size_t size_ = 0;
  std::uint64_t line_ = 1;
  std::uint64_t bytes_ = 0;
  bool atLineStart_ = true;
  bool onlyBlanks_ = true;
};

}  // namespace quill
