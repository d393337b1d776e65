#include "support/reference.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>

namespace quill::test {

const std::vector<nlohmann::json>& referencePositions() {
  static const std::vector<nlohmann::json> positions = [] {
    std::vector<nlohmann::json> all;
    std::ifstream file(QUILL_TEST_DATA "/reference_positions.jsonl");
    for (std::string line; std::getline(file, line);) all.push_back(nlohmann::json::parse(line));
    EXPECT_EQ(all.size(), 300u) << "reference_positions.jsonl is missing or cut";
    return all;
  }();
  return positions;
}

std::uint64_t parseHex(const nlohmann::json& text) {
  return std::stoull(text.get<std::string>(), nullptr, 16);
}

std::vector<Move> movesIn(const nlohmann::json& bits) {
  std::vector<Move> moves;
  for (const auto& text : bits) moves.push_back(static_cast<Move>(parseHex(text)));
  return moves;
}

}  // namespace quill::test
