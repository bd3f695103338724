// Sums that are not cached, sorting, and random values: work along one serial chain or in one given algorithm.
#include <algorithm>

#include "harness.h"
#include "machineLimits.h"

namespace bench {
namespace {

double sumGoal(unsigned long length) {
  if (length == 1'000) return 1.5;  // a call and a box on top
  return length == 100'000 || length == 10'000'000 ? 1.1 : 0;
}

void addSum(unsigned long length) {
  const Row row{"reductions/sum", length, sumGoal(length), "one chain of adds"};
  addPart(row, "native", [](unsigned long count) {
    return [array = doubleArray(count), sum = native<UnaryNative>("sumNative")] {
      storageOf(array).sumValid = 0;
      benchmark::DoNotOptimize(sum(array));
    };
  });
  addPart(row, "limit", [](unsigned long count) {
    return [=, values = valuesOf(doubleArray(count))] { benchmark::DoNotOptimize(addChain(values, count)); };
  });
}

// So many orders of the values in turn that the branch predictor learns none of them.
constexpr unsigned long kOrderedValues = 1'000'000;

// Sorts one block of `length` unsorted values after the other with `sort(out)`, which finds the block in `out`.
template <class Sort>
auto sortBlocks(unsigned long length, double* out, Sort sort) {
  const double* const unsorted = plainDoubles(std::max(kOrderedValues, length), 2).data();
  const unsigned long blocks = std::max(kOrderedValues / length, 1UL);
  return [=, block = 0UL]() mutable {
    const double* from = unsorted + block++ % blocks * length;
    std::copy(from, from + length, out);
    sort(out);
    benchmark::ClobberMemory();
  };
}

void addSort(unsigned long length) {
  const bool judged = length == 1'000 || length == 1'000'000;
  const Row row{"reductions/sort", length, judged ? 1.02 : 0, "std::sort"};
  addPart(row, "native", [](unsigned long count) {
    void* const array = doubleArray(count, 3);
    auto* const sort = native<void(void*)>("sort1DNative");
    return sortBlocks(count, valuesOf(array), [=](double*) { sort(array); });
  });
  addPart(row, "limit", [](unsigned long count) {
    return sortBlocks(count, reusedOutput(count), [=](double* values) { std::sort(values, values + count); });
  });
}

void addRandom(unsigned long length) {
  const Row row{"reductions/random", length, length == 1'000'000 ? 1.25 : 0, "the generator's chain"};
  addPart(row, "native", [](unsigned long count) {
    return [array = doubleArray(count, 3), fill = native<void(void*)>("fillRandomNative")] { fill(array); };
  });
  addPart(row, "limit", [](unsigned long count) {
    return [=, out = reusedOutput(count)] {
      generatorChain(out, count);
      benchmark::ClobberMemory();
    };
  });
}

}  // namespace

void addReductionRows() {
  for (const unsigned long length : kCurveLengths) {
    addSum(length);
    if (length <= 1'000'000) addSort(length), addRandom(length);
  }
}

}  // namespace bench
