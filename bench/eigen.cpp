// The same work done by Eigen, compiled for AVX2 without fused multiply-add, into memory that is reused.
#include "harness.h"

#ifdef VESK_BENCH_EIGEN

#include <Eigen/Core>

namespace bench {
namespace {

using Values = Eigen::Map<Eigen::ArrayXd>;
using Matrix = Eigen::Map<Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>>;

template <class Work>
void addValues(const char* name, unsigned long length, Work work) {
  addPart(Row{name, length}, "eigen", [work](unsigned long count) {
    const auto mapped = [count](void* array) { return Values(valuesOf(array), static_cast<long>(count)); };
    return [=, out = Values(reusedOutput(count), static_cast<long>(count)), lhs = mapped(doubleArray(count, 0)),
            rhs = mapped(doubleArray(count, 1))]() mutable {
      work(out, lhs, rhs);
      benchmark::ClobberMemory();
    };
  });
}

void addProduct(unsigned long extent) {
  addPart(Row{"matrix/product", extent}, "eigen", [](unsigned long rows) {
    const auto size = static_cast<long>(rows);
    return
        [out = Matrix(reusedOutput(rows * rows), size, size), lhs = Matrix(valuesOf(squareMatrix(rows, 0)), size, size),
         rhs = Matrix(valuesOf(squareMatrix(rows, 1)), size, size)]() mutable {
          out.noalias() = lhs * rhs;
          benchmark::ClobberMemory();
        };
  });
}

}  // namespace

void addEigenRows() {
  for (const unsigned long length : {1'000UL, 100'000UL, 10'000'000UL}) {
    addValues("element-wise/add", length, [](Values& out, Values& lhs, Values& rhs) { out = lhs + rhs; });
    addValues("reductions/sum", length, [](Values&, Values& lhs, Values&) { benchmark::DoNotOptimize(lhs.sum()); });
  }
  for (const unsigned long length : {1'000UL, 100'000UL}) {
    addValues("element-wise/multiply", length, [](Values& out, Values& lhs, Values& rhs) { out = lhs * rhs; });
    addValues("element-wise/divide", length, [](Values& out, Values& lhs, Values& rhs) { out = lhs / rhs; });
    addValues("element-wise/abs", length, [](Values& out, Values& lhs, Values&) { out = lhs.abs(); });
    addValues("element-wise/floor", length, [](Values& out, Values& lhs, Values&) { out = lhs.floor(); });
    addValues("element-wise/sqrt", length, [](Values& out, Values& lhs, Values&) { out = lhs.sqrt(); });
  }
  addValues("library/sin", 100'000, [](Values& out, Values& lhs, Values&) { out = lhs.sin(); });
  addValues("library/exp", 100'000, [](Values& out, Values& lhs, Values&) { out = lhs.exp(); });
  addValues("library/log", 100'000, [](Values& out, Values& lhs, Values&) { out = lhs.log(); });
  addValues("library/tanh", 100'000, [](Values& out, Values& lhs, Values&) { out = lhs.tanh(); });
  for (const unsigned long extent : {64UL, 256UL, 512UL, 1024UL}) addProduct(extent);
}

}  // namespace bench

#else
void bench::addEigenRows() {}
#endif
