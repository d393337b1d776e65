#include "book/book_keys.h"

#include <algorithm>

#include "board/sfmt.h"

namespace quill {

namespace {

// The first sixteen values and the last one are given. The generator's numbers for them are drawn
// and dropped, so that value i is always number i of its stream.
constexpr std::array<std::uint64_t, 16> FirstKeys = {
    0x5719555B81E14BA2, 0x55C0F845C2EE3CA7, 0xD3559C8D507EF27F, 0xCCAF760CACC035DE,
    0xDF944873986319E8, 0x3DA402A6FC615490, 0xFF6204374B8642B2, 0xAE1AA273740CCB09,
    0xD624CBF347C43773, 0x2C351EDFF4377AC4, 0xC18B71230A5F8F47, 0xE07CCF52555B5932,
    0x5352588F99640EAC, 0x0FB4663B79A62958, 0x21ADB89556133940, 0xB7ED4DD974A5B092};
constexpr std::uint64_t LastKey = 0x49D577CEF01E65C3;

std::array<std::uint64_t, 1024> makeBookKeys() {
  std::array<std::uint64_t, 1024> keys;
  Sfmt generator(BookKeySeed);
  for (std::uint64_t& key : keys) key = generator.next64();
  std::copy(FirstKeys.begin(), FirstKeys.end(), keys.begin());
  keys.back() = LastKey;
  return keys;
}

}  // namespace

const std::array<std::uint64_t, 1024> BookKeys = makeBookKeys();

}  // namespace quill
