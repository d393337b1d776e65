#include "shell/settings.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "platform/paths.h"
#include "shell/log.h"

namespace quill {

namespace {

constexpr std::size_t FirstBufferSize = 128;
constexpr std::size_t MaxBufferSize = INT_MAX;  // fgets counts in int

// Reads lines of any length into a buffer that is reused from line to line.
class LineReader {
 public:
  explicit LineReader(std::FILE* file)
      : file_(file), buffer_(static_cast<char*>(std::malloc(FirstBufferSize))) {}
  LineReader(const LineReader&) = delete;
  LineReader& operator=(const LineReader&) = delete;
  ~LineReader() { std::free(buffer_); }

  // The next line without its end, of the given length; nullptr at the end of the input.
  char* next(std::size_t& length) {
    length = 0;
    while (buffer_ != nullptr) {
      char* free = buffer_ + length;
      if (std::fgets(free, static_cast<int>(size_ - length), file_) == nullptr || *free == '\0') {
        return length == 0 ? nullptr : buffer_;
      }
      length += std::strlen(free);
      if (cutLineEnd(length) || std::feof(file_) != 0) return buffer_;
      if (length >= size_ / 2) {
        if (!enlarge()) return nullptr;
      } else {
        reportOddRead(length);
      }
    }
    return nullptr;
  }

 private:
  bool cutLineEnd(std::size_t& length) {
    const char last = buffer_[length - 1];
    if (last != '\n' && last != '\r') return false;
    const char other = last == '\n' ? '\r' : '\n';
    --length;
    if (length > 0 && buffer_[length - 1] == other) --length;
    buffer_[length] = '\0';
    return true;
  }

  bool enlarge() {
    const std::size_t newSize = std::min(2 * size_, MaxBufferSize);
    char* larger = newSize > size_ ? static_cast<char*>(std::realloc(buffer_, newSize)) : nullptr;
    if (larger == nullptr) {
      log("out of memory allocating %i bytes\n", static_cast<int>(newSize));
      return false;
    }
    buffer_ = larger;
    size_ = newSize;
    return true;
  }

  // A short read without the end of a line comes from a zero byte in the file. One message is
  // enough: a file full of them would flood the console.
  void reportOddRead(std::size_t length) {
    if (hasReported_) return;
    hasReported_ = true;
    log("??n=%i, size=%i, line=%s\n", static_cast<int>(length), static_cast<int>(size_), buffer_);
  }

  std::FILE* file_;
  std::size_t size_ = FirstBufferSize;
  char* buffer_;
  bool hasReported_ = false;
};

EngineString trimmed(const char* begin, const char* end) {
  while (begin < end && *begin == ' ') ++begin;
  while (end > begin && end[-1] == ' ') --end;
  return EngineString::makeN(begin, static_cast<std::int32_t>(end - begin) + 1);
}

}  // namespace

bool Settings::load(const char* path) {
  // Checked before it is opened: a pipe could wait forever for a writer, a device might never end.
  std::error_code error;
  if (!std::filesystem::is_regular_file(platform::pathOf(path), error)) return false;
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return false;

  LineReader reader(file);
  std::size_t length = 0;
  while (const char* line = reader.next(length)) {
    // A carriage return inside what fgets takes for one line also ends a line.
    const char* const end = line + length;
    for (const char* cut; (cut = std::find(line, end, '\r')) != end; line = cut + 1) {
      addLine(line, static_cast<std::size_t>(cut - line));
    }
    addLine(line, static_cast<std::size_t>(end - line));
  }
  const bool failed = std::ferror(file) != 0;
  std::fclose(file);
  return !failed;
}

void Settings::addLine(const char* line, std::size_t length) {
  const char* const end = line + length;
  const char* equals = std::find(line, end, '=');
  if (line == end || *line == '#' || equals == end || equals + 1 == end) return;
  set(trimmed(line, equals), trimmed(equals + 1, end));
}

void Settings::set(const EngineString& key, const EngineString& value) {
  const auto known = index_.find(key.text());
  if (known != index_.end()) {
    entries_[known->second].value = value;
    return;
  }
  if (entries_.size() == entries_.capacity()) {
    entries_.reserve(std::max<std::size_t>({entries_.size() + 1, 4, 2 * entries_.capacity()}));
  }
  entries_.push_back({key, value});
  index_.emplace(entries_.back().key.text(), entries_.size() - 1);
}

const Settings::Entry* Settings::find(const char* key) const {
  const auto known = index_.find(key);
  return known == index_.end() ? nullptr : &entries_[known->second];
}

const char* Settings::getString(const char* key, const char* defaultText) const {
  const Entry* entry = find(key);
  return entry == nullptr ? defaultText : entry->value.text();
}

EngineString Settings::getValue(const char* key, const char* defaultText) const {
  if (const Entry* entry = find(key)) return entry->value;
  return defaultText == nullptr ? EngineString() : EngineString(defaultText);
}

void Settings::dump(std::FILE* out) const {
  for (const Entry& entry : entries_) {
    std::fprintf(out, "%s=%s\n", entry.key.text(), entry.value.text());
  }
}

}  // namespace quill
