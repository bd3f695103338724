// A 64-bit counter that advances by the golden ratio, its value mixed by two multiply-xorshift rounds (the SplitMix64
// finalizer of Stafford's variant 13): one stream per thread, no state to share.
#include "host/random.h"

#include <atomic>

#include "host/threadState.h"

namespace {

constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15;

std::uint64_t mix(std::uint64_t value) {
  value = (value ^ value >> 30) * 0xBF58476D1CE4E5B9;
  value = (value ^ value >> 27) * 0x94D049BB133111EB;
  return value ^ value >> 31;
}

}  // namespace

namespace host {

std::uint64_t freshRandomState() {
  static std::atomic<std::uint64_t> threads{0};
  return mix(++threads);
}

void seedFastRandom(std::uint64_t seed) { gThread.randomState = seed; }

}  // namespace host

unsigned long nextFastRandomU64() { return mix(host::enterOperation("nextFastRandomU64").randomState += kGoldenRatio); }
