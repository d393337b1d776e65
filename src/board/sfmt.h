// The SIMD-oriented Fast Mersenne Twister with the standard parameters of exponent 19937 (Saito and
// Matsumoto, 2006), in its portable form: the same numbers on every machine.
#pragma once

#include <array>
#include <cstdint>

namespace quill {

class Sfmt {
 public:
  // Standard 32-bit seeding with period certification.
  explicit Sfmt(std::uint32_t seed);

  // The next 32-bit word of the stream.
  std::uint32_t next32();

  // The next two 32-bit words, the first as the low half.
  std::uint64_t next64();

 private:
  static constexpr int Blocks = 156;  // state words of 128 bits
  static constexpr int Words = Blocks * 4;

  void certifyPeriod();
  void regenerate();

  std::array<std::uint32_t, Words> state_;
  int index_;  // next word to hand out, Words when all are used
};

}  // namespace quill
