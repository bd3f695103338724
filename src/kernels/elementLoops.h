// The element-wise loops over bare doubles: one per number of operands and instruction set, a template over the
// operation only. Every element is computed on its own, reads come before the write of the same index, so `out` may be
// the very buffer of an operand. No alignment is required.
#pragma once

#include <cstdint>

#include "kernels/cpuDispatch.h"

using NdArrayUnaryLoop = void(double* out, const double* in, unsigned long length);
using NdArrayBinaryLoop = void(double* out, const double* lhs, const double* rhs, unsigned long length);

// From this length on a kernel has a full group of lanes to work on.
inline constexpr unsigned long kShortestAvx2Length = 4;

// out[i] = Function(in[i]): one direct call per element, or none where the function is inline.
template <double (*Function)(double)>
void unaryLoopPlain(double* out, const double* in, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) out[i] = Function(in[i]);
}

// out[i] = Function(lhs[i], rhs[i]).
template <double (*Function)(double, double)>
void binaryLoopPlain(double* out, const double* lhs, const double* rhs, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) out[i] = Function(lhs[i], rhs[i]);
}

// How the elements behind the last full group are computed: by the lane form like the groups, or by the scalar form,
// where that one is meant to round differently.
enum class Avx2Remainder { Lanes, Scalar };

// From this length on, results that lie on a multiple of 32 bytes go to memory past the caches: they would push out the
// operands, and would not be there any more when somebody reads them.
inline constexpr unsigned long kShortestStreamedLength = 1UL << 19;

// Stores four results at `out`, past the caches or through them.
template <bool kStreams>
NDARRAY_INLINE_AVX2 void storeLanes(double* out, __m256d lanes) {
  if constexpr (kStreams) {
    _mm256_stream_pd(out, lanes);
  } else {
    _mm256_storeu_pd(out, lanes);
  }
}

// Stores `group(i)`, the results from element i on, for all full groups of four, four groups per step while they last.
// Returns the index behind them.
template <bool kStreams, class Group>
NDARRAY_INLINE_AVX2 unsigned long storeGroups(double* out, unsigned long length, Group group) {
  unsigned long i = 0;
  for (; length - i >= 16; i += 16) {
    for (unsigned long k = i; k < i + 16; k += 4) storeLanes<kStreams>(out + k, group(k));
  }
  for (; length - i >= 4; i += 4) storeLanes<kStreams>(out + i, group(i));
  if constexpr (kStreams) _mm_sfence();
  return i;
}

// The same with the way that suits the length and the place of the results.
template <class Group>
NDARRAY_INLINE_AVX2 unsigned long storeGroups(double* out, unsigned long length, Group group) {
  const bool streams = length >= kShortestStreamedLength && reinterpret_cast<std::uintptr_t>(out) % 32 == 0;
  return streams ? storeGroups<true>(out, length, group) : storeGroups<false>(out, length, group);
}

// Groups of four by Op::lanes, the remaining elements one by one.
template <class Op, Avx2Remainder kRemainder>
NDARRAY_TARGET_AVX2 void unaryLoopAvx2(double* out, const double* in, unsigned long length) {
  const auto group = [=](unsigned long i) NDARRAY_TARGET_AVX2 { return Op::lanes(_mm256_loadu_pd(in + i)); };
  for (unsigned long i = storeGroups(out, length, group); i < length; ++i) {
    if constexpr (kRemainder == Avx2Remainder::Lanes) {
      out[i] = _mm256_cvtsd_f64(Op::lanes(_mm256_set1_pd(in[i])));
    } else {
      out[i] = Op::scalar(in[i]);
    }
  }
}

// The same for two operands; both forms round alike, so the remainder takes the scalar one.
template <class Op>
NDARRAY_TARGET_AVX2 void binaryLoopAvx2(double* out, const double* lhs, const double* rhs, unsigned long length) {
  const auto group = [=](unsigned long i)
                         NDARRAY_TARGET_AVX2 { return Op::lanes(_mm256_loadu_pd(lhs + i), _mm256_loadu_pd(rhs + i)); };
  for (unsigned long i = storeGroups(out, length, group); i < length; ++i) out[i] = Op::scalar(lhs[i], rhs[i]);
}
