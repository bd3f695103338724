#include "machineLimits.h"

#include <immintrin.h>

#include <cstdint>

#define LANES __attribute__((target("avx2")))

namespace bench {
namespace {

// Hides a register from the optimizer, so that work on unchanging values is not moved out of its loop.
#define OPAQUE(lanes) asm volatile("" : "+x"(lanes))

constexpr unsigned long kStep = 16;  // four loads or stores of four lanes

}  // namespace

LANES void copyLanes(double* out, const double* in, unsigned long length) {
  unsigned long i = 0;
  for (; i + kStep <= length; i += kStep)
    for (unsigned long lane = 0; lane < kStep; lane += 4)
      _mm256_storeu_pd(out + i + lane, _mm256_loadu_pd(in + i + lane));
  for (; i < length; ++i) out[i] = in[i];
}

LANES void triadLanes(double* out, const double* lhs, const double* rhs, unsigned long length) {
  const __m256d three = _mm256_set1_pd(3.0);
  unsigned long i = 0;
  for (; i + kStep <= length; i += kStep)
    for (unsigned long lane = i; lane < i + kStep; lane += 4)
      _mm256_storeu_pd(out + lane,
                       _mm256_add_pd(_mm256_loadu_pd(lhs + lane), _mm256_mul_pd(three, _mm256_loadu_pd(rhs + lane))));
  for (; i < length; ++i) out[i] = lhs[i] + 3.0 * rhs[i];
}

LANES double addChain(const double* values, unsigned long length) {
  __m256d sum = _mm256_setzero_pd();
  unsigned long i = 0;
  for (; i + kStep <= length; i += kStep)
    for (unsigned long lane = i; lane < i + kStep; lane += 4) sum = _mm256_add_pd(sum, _mm256_loadu_pd(values + lane));
  for (; i + 4 <= length; i += 4) sum = _mm256_add_pd(sum, _mm256_loadu_pd(values + i));
  double lanes[4];
  _mm256_storeu_pd(lanes, sum);
  double total = ((lanes[0] + lanes[1]) + lanes[2]) + lanes[3];
  for (; i < length; ++i) total += values[i];
  return total;
}

LANES void multiplyAddFromRegisters(unsigned long products) {
  constexpr int kChains = 12;  // hides the latency of two additions a cycle twice over
  __m256d sums[kChains];
  for (__m256d& sum : sums) sum = _mm256_setzero_pd();
  const __m256d lhs = _mm256_set1_pd(0.5), rhs = _mm256_set1_pd(0.25);
  for (unsigned long done = 0; done < products; done += 4 * kChains)
    for (__m256d& sum : sums) {
      __m256d product;
      asm volatile("vmulpd %1, %2, %0" : "=x"(product) : "x"(lhs), "x"(rhs));  // twelve times, never just once
      sum = _mm256_add_pd(sum, product);
    }
  for (__m256d& sum : sums) OPAQUE(sum);
}

LANES void divideFromRegisters(unsigned long length) {
  __m256d divisor = _mm256_set1_pd(0.7);
  const __m256d dividend = _mm256_set1_pd(0.3);
  for (unsigned long i = 0; i < length; i += 4) {
    OPAQUE(divisor);
    __m256d quotient = _mm256_div_pd(dividend, divisor);
    OPAQUE(quotient);
  }
}

LANES void squareRootFromRegisters(unsigned long length) {
  __m256d square = _mm256_set1_pd(0.7);
  for (unsigned long i = 0; i < length; i += 4) {
    OPAQUE(square);
    __m256d root = _mm256_sqrt_pd(square);
    OPAQUE(root);
  }
}

void generatorChain(double* out, unsigned long length) {
  std::uint64_t s0 = 0x9E3779B97F4A7C15U, s1 = 0xD1B54A32D192ED03U;
  for (unsigned long i = 0; i < length; ++i) {
    std::uint64_t mixed = s0;
    const std::uint64_t last = s1;
    s0 = last;
    mixed ^= mixed << 23;
    s1 = mixed ^ last ^ (mixed >> 17) ^ (last >> 26);
    out[i] = static_cast<double>(static_cast<std::int64_t>((s1 + last) >> 11)) * 0x1p-53;
  }
}

double emptyCall(void*, long long) { return 0.0; }

}  // namespace bench
