// Three hundred reference positions, with the values of an independent writing of the same rules.
#pragma once

#include <nlohmann/json.hpp>
#include <vector>

#include "board/move.h"

namespace quill::test {

// One object for each position of tests/data/reference_positions.jsonl; read once.
const std::vector<nlohmann::json>& referencePositions();

// The number in a text of hexadecimal digits.
std::uint64_t parseHex(const nlohmann::json& text);

// The moves in a list of such texts.
std::vector<Move> movesIn(const nlohmann::json& bits);

}  // namespace quill::test
