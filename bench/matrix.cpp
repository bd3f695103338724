// Matrix products against the processor's ceiling for separate multiplications and additions, and against the plain
// way: one dot product at a time over a transposed right operand.
#include "harness.h"
#include "kernels/dotProduct.h"
#include "kernels/matrixProduct.h"
#include "machineLimits.h"

namespace bench {
namespace {

void multiplyByDots(double* out, const double* lhs, const double* rhs, unsigned long extent) {
  std::vector<double> transposed(extent * extent);
  for (unsigned long p = 0; p < extent; ++p)
    for (unsigned long j = 0; j < extent; ++j) transposed[j * extent + p] = rhs[p * extent + j];
  for (unsigned long i = 0; i < extent; ++i)
    for (unsigned long j = 0; j < extent; ++j)
      out[i * extent + j] = dotProductAvx2(lhs + i * extent, &transposed[j * extent], extent);
}

// The product alone: without the result's object and without its sum, one addition after the other.
void multiplyTiles(double* out, const double* lhs, const double* rhs, unsigned long extent) {
  multiplyMatrices(out, lhs, rhs, {extent, extent, extent});
}

template <class Work>
void addLoop(const Row& row, const char* part, Work work) {
  addPart(row, part, [work](unsigned long extent) {
    return [=, out = reusedOutput(extent * extent), lhs = valuesOf(squareMatrix(extent, 0)),
            rhs = valuesOf(squareMatrix(extent, 1))] {
      work(out, lhs, rhs, extent);
      benchmark::ClobberMemory();
    };
  });
}

void addProduct(unsigned long extent, double shareOfCeiling) {
  const Row row{"matrix/product", extent, shareOfCeiling == 0 ? 0 : 1 / shareOfCeiling, "multiply-and-add ceiling"};
  addPart(row, "native", [](unsigned long rows) {
    return elementwiseCall("_matmulNative", true, squareMatrix(rows, 0), squareMatrix(rows, 1));
  });
  addLoop(row, "kernel", multiplyTiles);
  addPart(row, "limit", [](unsigned long rows) { return [=] { multiplyAddFromRegisters(rows * rows * rows); }; });
  addLoop(row, "dots", multiplyByDots);
}

}  // namespace

void addMatrixRows() {
  for (const unsigned long extent : {8UL, 16UL, 32UL, 128UL, 256UL}) addProduct(extent, extent == 256 ? 0.70 : 0);
  addProduct(64, 0.70);
  addProduct(512, 0.70);
  addProduct(1024, 0.65);
}

}  // namespace bench
