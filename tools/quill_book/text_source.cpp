#include "quill_book/text_source.h"

#include <algorithm>
#include <cassert>

namespace quill {

namespace {

constexpr std::size_t BlockSize = 1 << 16;

}  // namespace

TextSource::TextSource(std::istream& in) : in_(in), buffer_(BlockSize + MaxLookAhead) {
  // The byte order mark that some programs write before UTF-8 text.
  if (startsWith("\xEF\xBB\xBF")) next_ += 3;
}

bool TextSource::fill(std::size_t n) {
  if (size_ - next_ >= n) return true;
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(next_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(size_), buffer_.begin());
  size_ -= next_;
  next_ = 0;
  while (size_ < n && in_.good()) {
    in_.read(buffer_.data() + size_, BlockSize);
    size_ += static_cast<std::size_t>(in_.gcount());
  }
  return size_ >= n;
}

int TextSource::peek() {
  if (next_ == size_ && !fill(1)) return End;
  const auto c = static_cast<unsigned char>(buffer_[next_]);
  return c == '\r' ? '\n' : c;
}

int TextSource::get() {
  const int c = peek();
  if (c == End) return End;
  if (buffer_[next_] == '\r' && fill(2) && buffer_[next_ + 1] == '\n') {
    ++next_;
    ++bytes_;
  }
  ++next_;
  ++bytes_;
  if (c == '\n') {
    ++line_;
    atLineStart_ = onlyBlanks_ = true;
  } else {
    atLineStart_ = false;
    if (c != ' ' && c != '\t') onlyBlanks_ = false;
  }
  return c;
}

bool TextSource::startsWith(std::string_view text) {
  assert(text.size() <= MaxLookAhead);
  return fill(text.size()) && std::string_view(&buffer_[next_], text.size()) == text;
}

void TextSource::skipLine() {
  for (int c = get(); c != '\n' && c != End;) c = get();
}

}  // namespace quill
