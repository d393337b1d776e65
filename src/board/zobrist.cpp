#include "board/zobrist.h"

#include "board/sfmt.h"

namespace quill {

namespace detail {

ZobristTables zobristStore;

}  // namespace detail

void initZobrist() {
  constexpr std::uint32_t Seed = 7;
  Sfmt random(Seed);
  for (auto& row : detail::zobristStore.zobrist) {
    for (std::uint64_t& key : row) key = random.next64();
  }
  for (unsigned rights = 0; rights < 16; ++rights) {
    std::uint64_t key = 0;
    for (unsigned right = 0; right < 4; ++right) {
      if ((rights & (1u << right)) != 0) key ^= zobrist[0][8 + right];
    }
    detail::zobristStore.castleKey[rights] = key;
  }
}

}  // namespace quill
