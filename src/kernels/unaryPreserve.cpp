#include "kernels/unaryPreserve.h"

#include <cmath>

#include "kernels/elementLoops.h"
#include "kernels/operationRows.h"

namespace {

using Op = NdArrayUnaryPreserveOp;

// The scalar forms work through a 64-bit integer, which holds every value below 2^52 exactly. From there on a double
// has no fraction; the test is written so that NaN counts as such a value, too.
inline bool hasNoFraction(double x) { return !(std::fabs(x) < 0x1p52); }
inline double towardZero(double x) { return static_cast<double>(static_cast<long long>(x)); }

struct AbsOp {
  static double scalar(double x) { return std::fabs(x); }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) { return _mm256_andnot_pd(_mm256_set1_pd(-0.0), x); }
};
struct FloorOp {
  static double scalar(double x) {
    if (hasNoFraction(x)) return x;
    const double whole = towardZero(x);
    return std::copysign(whole > x ? whole - 1.0 : whole, x);
  }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) {
    return _mm256_round_pd(x, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC);
  }
};
struct CeilOp {
  static double scalar(double x) {
    if (hasNoFraction(x)) return x;
    const double whole = towardZero(x);
    return std::copysign(whole < x ? whole + 1.0 : whole, x);
  }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) {
    return _mm256_round_pd(x, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC);
  }
};
struct TruncOp {
  static double scalar(double x) { return hasNoFraction(x) ? x : std::copysign(towardZero(x), x); }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) {
    return _mm256_round_pd(x, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
  }
};
// Halves go away from zero, which no rounding instruction does. Adding the largest double below one half and dropping
// the fraction is exact: with one half itself, the value just below 0.5 and odd ones above 2^52 would be rounded up by
// the addition already.
struct RoundOp {
  static double scalar(double x) { return ::round(x); }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) {
    const __m256d sign = _mm256_and_pd(x, _mm256_set1_pd(-0.0));
    const __m256d almostHalf = _mm256_or_pd(sign, _mm256_set1_pd(0.49999999999999994));
    return TruncOp::lanes(_mm256_add_pd(x, almostHalf));
  }
};

template <class Form>
constexpr NdArrayUnaryPreserveRow rowFor(Op op, bool negatesNegativeIntegers, const char* notNumeric) {
  return {op, unaryLoopPlain<Form::scalar>, unaryLoopAvx2<Form, Avx2Remainder::Lanes>, negatesNegativeIntegers,
          notNumeric};
}

constexpr NdArrayUnaryPreserveRow kRows[] = {
    rowFor<AbsOp>(Op::Abs, true, "abs expects a numeric NDArray"),
    rowFor<RoundOp>(Op::Round, false, "round expects a numeric NDArray"),
    rowFor<FloorOp>(Op::Floor, false, "floor expects a numeric NDArray"),
    rowFor<CeilOp>(Op::Ceil, false, "ceil expects a numeric NDArray"),
    rowFor<TruncOp>(Op::Trunc, false, "trunc expects a numeric NDArray"),
};
static_assert(rowsFollowTheirCodes(kRows));

}  // namespace

const NdArrayUnaryPreserveRow& unaryPreserveRow(NdArrayUnaryPreserveOp op) { return rowOf(kRows, op); }

void applyUnaryPreserve(double* out, const double* in, unsigned long length, NdArrayUnaryPreserveOp op) {
  if (length >= kShortestAvx2Length && ndArrayCanUseAvx2()) {
    applyUnaryPreserveAvx2(out, in, length, op);
  } else {
    applyUnaryPreservePlain(out, in, length, op);
  }
}

void applyUnaryPreserveAvx2(double* out, const double* in, unsigned long length, NdArrayUnaryPreserveOp op) {
  rowOf(kRows, op).avx2(out, in, length);
}

void applyUnaryPreservePlain(double* out, const double* in, unsigned long length, NdArrayUnaryPreserveOp op) {
  rowOf(kRows, op).plain(out, in, length);
}
