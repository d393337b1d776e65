// Three hundred reference positions, with the values of an independent writing of the same rules.
#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/play.h"

namespace quill::test {

// One object for each position of tests/data/reference_positions.jsonl; read once.
const std::vector<nlohmann::json>& referencePositions();

// Calls check(board, reference) for each of them, on a board of its own. A failure names the FEN.
template <typename Check>
void forEachReference(Check check) {
  for (const nlohmann::json& reference : referencePositions()) {
    const auto fen = reference["fen"].get<std::string>();
    SCOPED_TRACE(fen);
    Board board = boardOf(fen);
    check(board, reference);
  }
}

// The number in a text of hexadecimal digits.
std::uint64_t parseHex(const nlohmann::json& text);

// The moves in a list of such texts.
std::vector<Move> movesIn(const nlohmann::json& bits);

}  // namespace quill::test
