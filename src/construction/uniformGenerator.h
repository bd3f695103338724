// The generator behind random arrays: xorshift128+ with shifts 23, 17, 26 (S. Vigna, "Further scramblings of
// Marsaglia's xorshift generators", 2014).
#pragma once

#include <cstdint>

struct UniformGenerator {
  std::uint64_t s0;
  std::uint64_t s1;

  // The next 64 bits of the stream; one step of the state.
  std::uint64_t nextBits() {
    std::uint64_t x = s0;
    const std::uint64_t y = s1;
    s0 = y;
    x ^= x << 23;
    s1 = x ^ y ^ (x >> 17) ^ (y >> 26);
    return s1 + y;
  }
};

// The upper 53 bits as a double in [0, 1); exact.
inline double uniformFromBits(std::uint64_t bits) {
  return static_cast<double>(static_cast<std::int64_t>(bits >> 11)) * 0x1p-53;  // below 2^53, so the sign is clear
}
