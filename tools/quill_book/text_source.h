// The characters of a text stream one by one, with their line numbers, whatever the size of the
// stream and however its lines end.
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

  // The next character, 0..255, or End. A carriage return, with a line feed behind it or not, reads
  // as a line feed.
  int peek();
  int get();

  // The text that follows is this one. Requires: a text of at most MaxLookAhead characters.
  bool startsWith(std::string_view text);

  void skipLine();

  // Line of the next character, counted from 1.
  std::uint64_t line() const { return line_; }
  // The next character is the first of its line.
  bool atLineStart() const { return atLineStart_; }
  // Only blanks stand before the next character on its line.
  bool onlyBlanksBefore() const { return onlyBlanks_; }

  // Bytes taken so far.
  std::uint64_t bytes() const { return bytes_; }

  static constexpr std::size_t MaxLookAhead = 32;

 private:
  // Makes sure that n characters can be looked at, unless the stream ends before.
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
