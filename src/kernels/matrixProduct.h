// Products of row-major matrices of doubles, bit for bit what one dot product per element gives (dotProduct.h).
#pragma once

// An m x k times k x n product.
struct MatrixProductShape {
  unsigned long rows;     // m
  unsigned long inner;    // k
  unsigned long columns;  // n
};

// Sets out[i * n + j] to the dot product of row i of lhs and column j of rhs. `out` overlaps neither operand. Takes
// scratch memory from the native heap, at most about twice the operands. Throws std::bad_alloc, with `out` unspecified.
// The first is only for processors with AVX2.
void multiplyMatricesAvx2(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape);
void multiplyMatricesBaseline(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape);

// The product in the order of the processor that runs it.
void multiplyMatrices(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape);
