#include "kernels/unaryFloat.h"

#include <cmath>

#include "kernels/operationRows.h"

namespace {

using Op = NdArrayUnaryFloatOp;

constexpr double kPi = 3.141592653589793;

struct SqrtOp {
  static double scalar(double x) { return ::sqrt(x); }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) { return _mm256_sqrt_pd(x); }
};
// The scalar forms of the angle conversions round twice, product and quotient; the groups multiply once by the rounded
// constant. The last bits differ for many values, and that difference is part of the result: neither form may replace
// the other.
struct DegreesOp {
  static double scalar(double x) { return (x * 180.0) / kPi; }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) { return _mm256_mul_pd(x, _mm256_set1_pd(57.29577951308232)); }
};
struct RadiansOp {
  static double scalar(double x) { return (x * kPi) / 180.0; }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x) { return _mm256_mul_pd(x, _mm256_set1_pd(0.017453292519943295)); }
};

// What lies outside a domain, as a mask over two values. The comparisons are ordered, so NaN never does.
struct Negative {
  static __m128d mask(__m128d x) { return _mm_cmplt_pd(x, _mm_setzero_pd()); }
};
struct NotPositive {
  static __m128d mask(__m128d x) { return _mm_cmple_pd(x, _mm_setzero_pd()); }
};
struct NotAboveMinusOne {
  static __m128d mask(__m128d x) { return _mm_cmple_pd(x, _mm_set1_pd(-1.0)); }
};
struct BeyondOne {
  static __m128d mask(__m128d x) { return _mm_cmpgt_pd(_mm_andnot_pd(_mm_set1_pd(-0.0), x), _mm_set1_pd(1.0)); }
};

// Gathers the masks of a whole block before it decides: only whether any value fails matters, not which.
template <class Outside>
bool anyOutside(const double* values, unsigned long length) {
  constexpr unsigned long kBlock = 16;
  unsigned long i = 0;
  for (; length - i >= kBlock; i += kBlock) {
    __m128d failures = _mm_setzero_pd();
    for (unsigned long k = i; k < i + kBlock; k += 2) {
      failures = _mm_or_pd(failures, Outside::mask(_mm_loadu_pd(values + k)));
    }
    if (_mm_movemask_pd(failures) != 0) return true;
  }
  for (; i < length; ++i) {
    if (_mm_movemask_pd(Outside::mask(_mm_set1_pd(values[i]))) != 0) return true;
  }
  return false;
}

// A library function without lane form and with results everywhere.
template <double (*Function)(double)>
constexpr NdArrayUnaryFloatRow everywhere(Op op, const char* notNumeric) {
  return {op, unaryLoopPlain<Function>, nullptr, nullptr, nullptr, notNumeric};
}
// A library function with a domain.
template <double (*Function)(double), class Outside>
constexpr NdArrayUnaryFloatRow within(Op op, const char* outsideMessage, const char* notNumeric) {
  return {op, unaryLoopPlain<Function>, nullptr, anyOutside<Outside>, outsideMessage, notNumeric};
}
// An angle conversion, whose remainder behind the groups takes the scalar form.
template <class Conversion>
constexpr NdArrayUnaryFloatRow angle(Op op, const char* notNumeric) {
  return {
      op,        unaryLoopPlain<Conversion::scalar>, unaryLoopAvx2<Conversion, Avx2Remainder::Scalar>, nullptr, nullptr,
      notNumeric};
}

constexpr NdArrayUnaryFloatRow kRows[] = {
    {Op::Sqrt, unaryLoopPlain<SqrtOp::scalar>, unaryLoopAvx2<SqrtOp, Avx2Remainder::Lanes>, anyOutside<Negative>,
     "sqrt expects a value >= 0", "sqrt expects a numeric NDArray"},
    everywhere<::cbrt>(Op::Cbrt, "cbrt expects a numeric NDArray"),
    everywhere<::sin>(Op::Sin, "sin expects a numeric NDArray"),
    everywhere<::cos>(Op::Cos, "cos expects a numeric NDArray"),
    everywhere<::tan>(Op::Tan, "tan expects a numeric NDArray"),
    within<::asin, BeyondOne>(Op::Asin, "asin expects a value in [-1, 1]", "asin expects a numeric NDArray"),
    within<::acos, BeyondOne>(Op::Acos, "acos expects a value in [-1, 1]", "acos expects a numeric NDArray"),
    everywhere<::atan>(Op::Atan, "atan expects a numeric NDArray"),
    everywhere<::sinh>(Op::Sinh, "sinh expects a numeric NDArray"),
    everywhere<::cosh>(Op::Cosh, "cosh expects a numeric NDArray"),
    everywhere<::tanh>(Op::Tanh, "tanh expects a numeric NDArray"),
    everywhere<::exp>(Op::Exp, "exp expects a numeric NDArray"),
    everywhere<::exp2>(Op::Exp2, "exp2 expects a numeric NDArray"),
    everywhere<::expm1>(Op::Expm1, "expm1 expects a numeric NDArray"),
    within<::log, NotPositive>(Op::Log, "log expects a value > 0", "log expects a numeric NDArray"),
    within<::log10, NotPositive>(Op::Log10, "log10 expects a value > 0", "log10 expects a numeric NDArray"),
    within<::log2, NotPositive>(Op::Log2, "log2 expects a value > 0", "log2 expects a numeric NDArray"),
    within<::log1p, NotAboveMinusOne>(Op::Log1p, "log1p expects a value > -1", "log1p expects a numeric NDArray"),
    angle<DegreesOp>(Op::Degrees, "degrees expects a numeric NDArray"),
    angle<RadiansOp>(Op::Radians, "radians expects a numeric NDArray"),
};
static_assert(rowsFollowTheirCodes(kRows));

}  // namespace

const NdArrayUnaryFloatRow& unaryFloatRow(NdArrayUnaryFloatOp op) { return rowOf(kRows, op); }

void applyUnaryFloat(double* out, const double* in, unsigned long length, NdArrayUnaryFloatOp op) {
  if (length >= kShortestAvx2Length && ndArrayCanUseAvx2()) {
    applyUnaryFloatAvx2(out, in, length, op);
  } else {
    applyUnaryFloatPlain(out, in, length, op);
  }
}

void applyUnaryFloatAvx2(double* out, const double* in, unsigned long length, NdArrayUnaryFloatOp op) {
  const NdArrayUnaryFloatRow& row = rowOf(kRows, op);
  NdArrayUnaryLoop* const loop = row.avx2 != nullptr ? row.avx2 : row.plain;
  loop(out, in, length);
}

void applyUnaryFloatPlain(double* out, const double* in, unsigned long length, NdArrayUnaryFloatOp op) {
  rowOf(kRows, op).plain(out, in, length);
}
