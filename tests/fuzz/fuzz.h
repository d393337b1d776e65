// What the fuzz targets share. Each target is one function that takes any bytes: libFuzzer calls it
// (preset "fuzz"), and in every other build replay.cpp does, with the files of the corpus.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

#include "board/attacks.h"
#include "board/zobrist.h"
#include "platform/standard_streams.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace quill::fuzz {

// Ends the program when what must hold does not, so that the input is kept.
#define FUZZ_CHECK(condition)                                              \
  do {                                                                     \
    if (!(condition)) {                                                    \
      std::fprintf(stderr, "%s:%i: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                        \
    }                                                                      \
  } while (false)

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// The tables that all of the engine needs. To be called before anything else.
inline void initOnce() {
  [[maybe_unused]] static const bool done = (initTables(), initZobrist(), true);
}

// A stream that keeps nothing.
inline std::FILE* nowhere() {
  static std::FILE* const stream = std::fopen(platform::NullDevice, "w");
  return stream;
}

// A file that holds the bytes of the input in hand; it is removed with the object.
class InputFile {
 public:
  explicit InputFile(std::string_view bytes) { std::ofstream(path_, std::ios::binary) << bytes; }
  ~InputFile() { std::filesystem::remove(path_); }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  std::string path() const { return path_.string(); }

 private:
  // The address of the process's own data tells processes that run side by side apart.
  const std::filesystem::path path_ =
      std::filesystem::temp_directory_path() /
      ("quill_fuzz_" + std::to_string(reinterpret_cast<std::uintptr_t>(this)));
};

}  // namespace quill::fuzz
