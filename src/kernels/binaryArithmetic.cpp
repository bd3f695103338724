#include "kernels/binaryArithmetic.h"

#include "kernels/elementLoops.h"
#include "kernels/operationRows.h"

namespace {

struct AddOp {
  static double scalar(double x, double y) { return x + y; }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x, __m256d y) { return _mm256_add_pd(x, y); }
};
struct SubtractOp {
  static double scalar(double x, double y) { return x - y; }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x, __m256d y) { return _mm256_sub_pd(x, y); }
};
struct MultiplyOp {
  static double scalar(double x, double y) { return x * y; }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x, __m256d y) { return _mm256_mul_pd(x, y); }
};
struct DivideOp {
  static double scalar(double x, double y) { return x / y; }
  NDARRAY_INLINE_AVX2 static __m256d lanes(__m256d x, __m256d y) { return _mm256_div_pd(x, y); }
};

struct Row {
  NdArrayBinaryArithmeticOp op;
  NdArrayBinaryLoop* plain;
  NdArrayBinaryLoop* avx2;
};

constexpr Row kRows[] = {
    {NdArrayBinaryArithmeticOp::Add, binaryLoopPlain<AddOp::scalar>, binaryLoopAvx2<AddOp>},
    {NdArrayBinaryArithmeticOp::Subtract, binaryLoopPlain<SubtractOp::scalar>, binaryLoopAvx2<SubtractOp>},
    {NdArrayBinaryArithmeticOp::Multiply, binaryLoopPlain<MultiplyOp::scalar>, binaryLoopAvx2<MultiplyOp>},
    {NdArrayBinaryArithmeticOp::Divide, binaryLoopPlain<DivideOp::scalar>, binaryLoopAvx2<DivideOp>},
};
static_assert(rowsFollowTheirCodes(kRows));

}  // namespace

void applyBinaryArithmetic(double* out, const double* lhs, const double* rhs, unsigned long length,
                           NdArrayBinaryArithmeticOp op) {
  if (length >= kShortestAvx2Length && ndArrayCanUseAvx2()) {
    applyBinaryArithmeticAvx2(out, lhs, rhs, length, op);
  } else {
    applyBinaryArithmeticPlain(out, lhs, rhs, length, op);
  }
}

void applyBinaryArithmeticAvx2(double* out, const double* lhs, const double* rhs, unsigned long length,
                               NdArrayBinaryArithmeticOp op) {
  rowOf(kRows, op).avx2(out, lhs, rhs, length);
}

void applyBinaryArithmeticPlain(double* out, const double* lhs, const double* rhs, unsigned long length,
                                NdArrayBinaryArithmeticOp op) {
  rowOf(kRows, op).plain(out, lhs, rhs, length);
}
