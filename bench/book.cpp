// Book look-ups in a file of a million records: time and reads of the file for each.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "board/sfmt.h"
#include "book/book.h"

namespace {

using quill::Book;

constexpr std::size_t Records = 1000000;
constexpr char StartFen[] = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

// A book of random keys in which the start position has twenty moves.
class MillionRecords {
 public:
  MillionRecords() {
    quill::Sfmt random(1);
    for (std::size_t i = 0; i < Records - 20; ++i) keys.push_back(random.next64());
    keys.insert(keys.end(), 20, Book::bookKey(StartFen)->lookupKey());
    std::sort(keys.begin(), keys.end());
    std::ofstream file(path_, std::ios::binary);
    file.write("\0\0\0\0\0\0\0\0\0\0\0\0\x10\1\x10\2", 16);
    int number = 0;
    for (const std::uint64_t key : keys) {
      std::array<char, 16> record{};
      for (int i = 0; i < 8; ++i) record[i] = static_cast<char>(key >> (56 - 8 * i));
      record[8] = static_cast<char>(number++ & 0x77);
      record[10] = 1;
      file.write(record.data(), record.size());
    }
    file.close();
    book.open(path_.c_str());
  }
  ~MillionRecords() { std::filesystem::remove(path_); }

  std::vector<std::uint64_t> keys;
  Book book;

 private:
  // Each run has a name of its own, since several may run at the same time.
  std::string name_ = "quill_bench_book_" +
                      std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) +
                      ".bbk";
  std::string path_ = (std::filesystem::temp_directory_path() / name_).string();
};

MillionRecords& millionRecords() {
  static MillionRecords records;
  return records;
}

void setReads(benchmark::State& state, std::uint64_t reads) {
  state.counters["reads"] =
      benchmark::Counter(static_cast<double>(reads), benchmark::Counter::kAvgIterations);
}

void findRandomKey(benchmark::State& state) {
  MillionRecords& records = millionRecords();
  quill::Sfmt random(2);
  const std::uint64_t before = records.book.readCount();
  for (auto _ : state) {
    const std::uint64_t key = records.keys[random.next64() % records.keys.size()];
    if (!records.book.find(key)) state.SkipWithError("a key of the book was not found");
  }
  setReads(state, records.book.readCount() - before);
}
BENCHMARK(findRandomKey)->Unit(benchmark::kMicrosecond);

void missRandomKey(benchmark::State& state) {
  MillionRecords& records = millionRecords();
  quill::Sfmt random(3);
  const std::uint64_t before = records.book.readCount();
  for (auto _ : state) benchmark::DoNotOptimize(records.book.find(random.next64()));
  setReads(state, records.book.readCount() - before);
}
BENCHMARK(missRandomKey)->Unit(benchmark::kMicrosecond);

void loadCandidatesOfStart(benchmark::State& state) {
  MillionRecords& records = millionRecords();
  const std::uint64_t before = records.book.readCount();
  for (auto _ : state) {
    if (records.book.loadCandidates(StartFen) != 20) state.SkipWithError("candidates are missing");
  }
  setReads(state, records.book.readCount() - before);
}
BENCHMARK(loadCandidatesOfStart)->Unit(benchmark::kMicrosecond);

}  // namespace
