#include "shell/text.h"

#include <algorithm>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <system_error>
#include <utility>

namespace quill {

namespace {

constexpr std::int64_t MaxBlockSize = std::numeric_limits<std::int32_t>::max();

[[noreturn]] void failAllocation(const char* what) {
  std::printf("%s failed", what);
  std::fflush(stdout);
  std::abort();
}

constexpr bool isSeparator(char c) { return c == ' ' || c == '\t'; }

char lowerCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

// The text follows the record in memory.
struct EngineString::Block {
  std::int32_t refs;
  std::int32_t size;  // length of the text + 1

  char* chars() { return reinterpret_cast<char*>(this + 1); }

  // Makes a block with one reference, or enlarges an unshared one; sets size and the terminator.
  static Block* allocate(Block* old, std::int64_t newSize) {
    void* memory = newSize > MaxBlockSize
                       ? nullptr
                       : std::realloc(old, sizeof(Block) + static_cast<std::size_t>(newSize));
    if (memory == nullptr) failAllocation(old == nullptr ? "malloc" : "realloc");
    auto* block = static_cast<Block*>(memory);
    block->refs = 1;
    block->size = static_cast<std::int32_t>(newSize);
    block->chars()[newSize - 1] = '\0';
    return block;
  }

  static Block* make(const char* text, std::int64_t newSize) {
    Block* block = allocate(nullptr, newSize);
    if (newSize > 1) std::memcpy(block->chars(), text, static_cast<std::size_t>(newSize - 1));
    return block;
  }
};

EngineString::EngineString(const char* text)
    : block_(Block::make(text,
                         text == nullptr ? 1 : static_cast<std::int64_t>(std::strlen(text)) + 1)) {}

EngineString EngineString::makeN(const char* text, std::int32_t size) {
  EngineString result;
  result.block_ = Block::make(text, text == nullptr ? 1 : std::max(size, 1));
  return result;
}

EngineString::EngineString(const EngineString& other) : block_(other.block_) {
  if (block_ != nullptr) ++block_->refs;
}

EngineString::EngineString(EngineString&& other) noexcept
    : block_(std::exchange(other.block_, nullptr)) {}

EngineString& EngineString::operator=(const EngineString& other) {
  EngineString shared(other);
  std::swap(block_, shared.block_);
  return *this;
}

EngineString& EngineString::operator=(EngineString&& other) noexcept {
  std::swap(block_, other.block_);
  return *this;
}

EngineString::~EngineString() { release(); }

void EngineString::release() {
  if (block_ != nullptr && --block_->refs == 0) std::free(block_);
  block_ = nullptr;
}

EngineString& EngineString::append(const char* text, std::int32_t n) {
  if (text == nullptr || n <= 0) return *this;
  if (block_ == nullptr) {
    block_ = Block::make(text, static_cast<std::int64_t>(n) + 1);
    return *this;
  }

  const std::int32_t oldLength = length();
  const std::int64_t newSize = static_cast<std::int64_t>(block_->size) + n;
  // The text may be part of this string, which moves when it is enlarged.
  const auto place = reinterpret_cast<std::uintptr_t>(text);
  const auto begin = reinterpret_cast<std::uintptr_t>(block_->chars());
  const bool isOwnText =
      place >= begin && place - begin < static_cast<std::uintptr_t>(block_->size);

  if (block_->refs > 1) {
    Block* copy = Block::allocate(nullptr, newSize);
    std::memcpy(copy->chars(), block_->chars(), static_cast<std::size_t>(oldLength));
    --block_->refs;
    block_ = copy;
  } else {
    block_ = Block::allocate(block_, newSize);
  }
  if (isOwnText) text = block_->chars() + (place - begin);
  std::memmove(block_->chars() + oldLength, text, static_cast<std::size_t>(n));
  return *this;
}

EngineString& EngineString::appendText(const char* text) {
  if (text == nullptr) return *this;
  return append(text,
                static_cast<std::int32_t>(std::min<std::size_t>(std::strlen(text), MaxBlockSize)));
}

EngineString& EngineString::appendChar(char c) { return append(&c, 1); }

EngineString& EngineString::appendInt(int value) {
  char digits[16];
  return append(digits, std::snprintf(digits, sizeof digits, "%i", value));
}

EngineString EngineString::substring(std::int32_t start, std::int32_t end) const {
  start = std::max(start, 0);
  end = std::min(end, length());
  if (start >= end) return makeN("", 1);
  return makeN(text() + start, end - start + 1);
}

const char* EngineString::text() const { return block_ == nullptr ? "" : block_->chars(); }

std::int32_t EngineString::length() const { return block_ == nullptr ? 0 : block_->size - 1; }

std::int32_t EngineString::refs() const { return block_ == nullptr ? 0 : block_->refs; }

bool equalsIgnoreCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](char x, char y) { return lowerCase(x) == lowerCase(y); });
}

std::int32_t parseInt(std::string_view text) {
  const std::int64_t value = parseInt64(text);
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      value, std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
}

std::int64_t parseInt64(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool isNegative = text.starts_with('-');
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  std::int64_t value = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
  if (result.ec != std::errc::result_out_of_range) return value;
  return isNegative ? std::numeric_limits<std::int64_t>::min()
                    : std::numeric_limits<std::int64_t>::max();
}

void appendFormat(std::string& text, const char* format, ...) {
  char buffer[128];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  text += buffer;
}

void Tokenizer::setArgs(const char* text) {
  rest_ = text;
  dropLeading(0);
}

void Tokenizer::dropLeading(std::int32_t pos) {
  while (pos-- > 0 && argsLeft()) ++rest_;
  while (isSeparator(*rest_)) ++rest_;
}

std::string_view Tokenizer::nextWord() {
  const std::string_view word(rest_, std::strcspn(rest_, " \t"));
  rest_ += word.size();
  dropLeading(0);
  return word;
}

EngineString Tokenizer::nextToken() {
  const std::string_view word = nextWord();
  constexpr std::size_t MostCharacters = MaxBlockSize - 1;
  return EngineString::makeN(word.data(),
                             static_cast<std::int32_t>(std::min(word.size(), MostCharacters)) + 1);
}

std::int32_t Tokenizer::nextInt(std::int32_t defaultValue) {
  const std::string_view word = nextWord();
  return word.empty() ? defaultValue : parseInt(word);
}

}  // namespace quill
