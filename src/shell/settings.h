// The settings that the engine reads at start-up: key and value pairs from a text file.
//
// File format: one "key=value" on each line; "#" in the first column begins a comment; lines
// without "=" or with nothing after it are skipped; blanks around key and value do not count. Lines
// end with a line feed, a carriage return or both, and may be of any length.
//
// Threads: the input thread only.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "shell/text.h"

namespace quill {

class Settings {
 public:
  Settings() = default;
  Settings(const Settings&) = delete;  // the index refers to the keys' own text
  Settings& operator=(const Settings&) = delete;

  // Adds the file's pairs to those that are there.
  // On failure: false when it is no regular file, or can't be opened or read.
  bool load(const char* path);

  // Replaces the value of a key or appends a new pair. The letter case of keys matters.
  void set(const EngineString& key, const EngineString& value);

  // The value of a key, or the default. The text lives until the key is set again.
  const char* getString(const char* key, const char* defaultText) const;
  // The same as a string that shares the stored block; empty without value and default.
  EngineString getValue(const char* key, const char* defaultText = nullptr) const;

  // Writes "key=value" lines in the order in which the keys first appeared.
  void dump(std::FILE* out = stdout) const;

 private:
  struct Entry {
    EngineString key;
    EngineString value;
  };

  void addLine(const char* line, std::size_t length);
  const Entry* find(const char* key) const;

  std::vector<Entry> entries_;
  std::unordered_map<std::string_view, std::size_t> index_;  // key to place in entries_
};

}  // namespace quill
