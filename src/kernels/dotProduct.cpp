#include "kernels/dotProduct.h"

#include "kernels/cpuDispatch.h"

namespace {

double addProductsInOrder(double sum, const double* lhs, const double* rhs, unsigned long begin, unsigned long end) {
  for (unsigned long i = begin; i < end; ++i) sum = sum + lhs[i] * rhs[i];
  return sum;
}

}  // namespace

NDARRAY_TARGET_AVX2 double dotProductAvx2(const double* lhs, const double* rhs, unsigned long length) {
  const unsigned long blocksEnd = length - length % 4;
  __m256d lanes = _mm256_setzero_pd();  // one accumulator: a second one would change the order
  for (unsigned long i = 0; i < blocksEnd; i += 4) {
    lanes = _mm256_add_pd(lanes, _mm256_mul_pd(_mm256_loadu_pd(lhs + i), _mm256_loadu_pd(rhs + i)));
  }
  alignas(32) double lane[4];
  _mm256_store_pd(lane, lanes);
  return addProductsInOrder(((lane[0] + lane[1]) + lane[2]) + lane[3], lhs, rhs, blocksEnd, length);
}

double dotProductBaseline(const double* lhs, const double* rhs, unsigned long length) {
  const unsigned long blocksEnd = length - length % 4;
  double lane[4] = {0.0, 0.0, 0.0, 0.0};
  for (unsigned long i = 0; i < blocksEnd; i += 4) {
    for (unsigned long j = 0; j < 4; ++j) lane[j] = lane[j] + lhs[i + j] * rhs[i + j];
  }
  return addProductsInOrder((lane[0] + lane[1]) + (lane[2] + lane[3]), lhs, rhs, blocksEnd, length);
}
