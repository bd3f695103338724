#include "kernels/reduceSum.h"

#include "kernels/cpuDispatch.h"

namespace {

double addInOrder(double sum, const double* values, unsigned long begin, unsigned long end) {
  for (unsigned long i = begin; i < end; ++i) sum = sum + values[i];
  return sum;
}

}  // namespace

NDARRAY_TARGET_AVX2 double reduceSumAvx2(const double* values, unsigned long length) {
  const unsigned long blocksEnd = length - length % 4;
  __m256d lanes = _mm256_setzero_pd();  // one accumulator: a second one would change the order
  unsigned long i = 0;
  for (; blocksEnd - i >= 32; i += 32) {  // in long steps the processor asks memory for more values ahead
    for (unsigned long k = i; k < i + 32; k += 4) lanes = _mm256_add_pd(lanes, _mm256_loadu_pd(values + k));
  }
  for (; i < blocksEnd; i += 4) lanes = _mm256_add_pd(lanes, _mm256_loadu_pd(values + i));
  alignas(32) double lane[4];
  _mm256_store_pd(lane, lanes);
  return addInOrder(((lane[0] + lane[1]) + lane[2]) + lane[3], values, blocksEnd, length);
}

double reduceSumBaseline(const double* values, unsigned long length) {
  const unsigned long blocksEnd = length - length % 4;
  double lane[4] = {0.0, 0.0, 0.0, 0.0};
  for (unsigned long i = 0; i < blocksEnd; i += 4) {
    for (unsigned long j = 0; j < 4; ++j) lane[j] = lane[j] + values[i + j];
  }
  return addInOrder((lane[0] + lane[1]) + (lane[2] + lane[3]), values, blocksEnd, length);
}

double reduceSumBuffer(const double* values, unsigned long length) {
  if (length < 4) return addInOrder(0.0, values, 0, length);
  return ndArrayCanUseAvx2() ? reduceSumAvx2(values, length) : reduceSumBaseline(values, length);
}
