#include "board/sfmt.h"

namespace quill {

namespace {

// Parameters of the 19937 exponent.
constexpr int Position = 122 * 4;  // the recursion's second source, in 32-bit words
constexpr int LeftBits = 18;       // shift of each 32-bit word
constexpr int LeftBytes = 1;       // shift of the whole block
constexpr int RightBits = 11;
constexpr int RightBytes = 1;
constexpr std::uint32_t Masks[4] = {0xDFFFFFEF, 0xDDFECB7F, 0xBFFAFFFF, 0xBFFFFFF6};
constexpr std::uint32_t Parity[4] = {0x00000001, 0, 0, 0x13C9E684};

// Shifts a 128-bit block of four words, the lowest first, by whole bytes.
void shiftBlock(std::uint32_t* out, const std::uint32_t* in, int leftBytes, int rightBytes) {
  const std::uint64_t high = (std::uint64_t{in[3]} << 32) | in[2];
  const std::uint64_t low = (std::uint64_t{in[1]} << 32) | in[0];
  std::uint64_t outHigh = 0;
  std::uint64_t outLow = 0;
  if (leftBytes > 0) {
    outHigh = (high << (leftBytes * 8)) | (low >> (64 - leftBytes * 8));
    outLow = low << (leftBytes * 8);
  } else {
    outHigh = high >> (rightBytes * 8);
    outLow = (low >> (rightBytes * 8)) | (high << (64 - rightBytes * 8));
  }
  out[0] = static_cast<std::uint32_t>(outLow);
  out[1] = static_cast<std::uint32_t>(outLow >> 32);
  out[2] = static_cast<std::uint32_t>(outHigh);
  out[3] = static_cast<std::uint32_t>(outHigh >> 32);
}

}  // namespace

Sfmt::Sfmt(std::uint32_t seed) : index_(Words) {
  state_[0] = seed;
  for (unsigned i = 1; i < state_.size(); ++i) {
    state_[i] = 1812433253u * (state_[i - 1] ^ (state_[i - 1] >> 30)) + i;
  }
  certifyPeriod();
}

// A state of even parity lies outside the long cycle; flipping one bit moves it in.
void Sfmt::certifyPeriod() {
  std::uint32_t inner = 0;
  for (unsigned i = 0; i < 4; ++i) inner ^= state_[i] & Parity[i];
  for (int shift = 16; shift > 0; shift >>= 1) inner ^= inner >> shift;
  if ((inner & 1) != 0) return;
  for (unsigned i = 0; i < 4; ++i) {
    if (Parity[i] != 0) {
      state_[i] ^= Parity[i] & (~Parity[i] + 1);
      return;
    }
  }
}

void Sfmt::regenerate() {
  const std::uint32_t* r1 = &state_[Words - 8];
  const std::uint32_t* r2 = &state_[Words - 4];
  for (int i = 0; i < Words; i += 4) {
    std::uint32_t* a = &state_[static_cast<unsigned>(i)];
    const std::uint32_t* b = &state_[static_cast<unsigned>((i + Position) % Words)];
    std::uint32_t left[4];
    std::uint32_t right[4];
    shiftBlock(left, a, LeftBytes, 0);
    shiftBlock(right, r1, 0, RightBytes);
    for (int k = 0; k < 4; ++k) {
      a[k] ^= left[k] ^ ((b[k] >> RightBits) & Masks[k]) ^ right[k] ^ (r2[k] << LeftBits);
    }
    r1 = r2;
    r2 = a;
  }
  index_ = 0;
}

std::uint32_t Sfmt::next32() {
  if (index_ == Words) regenerate();
  return state_[static_cast<unsigned>(index_++)];
}

std::uint64_t Sfmt::next64() {
  const std::uint64_t low = next32();
  return low | (std::uint64_t{next32()} << 32);
}

}  // namespace quill
