#include "kernels/matrixProduct.h"

#include <vector>

#include "kernels/cpuDispatch.h"
#include "kernels/dotProduct.h"

namespace {

template <double (*Dot)(const double*, const double*, unsigned long)>
void multiplyByDots(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  const auto [rows, inner, columns] = shape;
  std::vector<double> column(inner);
  for (unsigned long j = 0; j < columns; ++j) {
    for (unsigned long p = 0; p < inner; ++p) column[p] = rhs[p * columns + j];
    for (unsigned long i = 0; i < rows; ++i) out[i * columns + j] = Dot(lhs + i * inner, column.data(), inner);
  }
}

}  // namespace

void multiplyMatricesAvx2(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  multiplyByDots<dotProductAvx2>(out, lhs, rhs, shape);
}

void multiplyMatricesBaseline(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  multiplyByDots<dotProductBaseline>(out, lhs, rhs, shape);
}

void multiplyMatrices(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  ndArrayCanUseAvx2() ? multiplyMatricesAvx2(out, lhs, rhs, shape) : multiplyMatricesBaseline(out, lhs, rhs, shape);
}
