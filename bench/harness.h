// What all benchmarks share: the rows of the table with their parts, the natives of the shipped module, and operands
// that live to the end of the process. Every part of a row is measured right after the other in each round, so that
// their ratio sees the same machine.
#pragma once

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "host/host.h"

namespace bench {

// One row: an operation at one length. The time that counts is the part "kernel" where there is one, else "native" less
// the making of its result ("result") where that is measured, else "native". It is held against the largest part whose
// name begins with "limit".
struct Row {
  std::string name;          // "family/operation"
  unsigned long length;      // elements; rows of a square matrix
  double goal = 0;           // the bound of counted time over limit; 0 where the row is only measured
  const char* against = "";  // what the limit does, in words
};

// Adds a part to the row. `prepare(length)` returns the body of one iteration; it is called outside the timed loop.
template <class Prepare>
void addPart(const Row& row, const char* part, Prepare prepare) {
  const std::string name = row.name + '/' + std::to_string(row.length) + '/' + part;
  benchmark::RegisterBenchmark(name.c_str(), [row, prepare](benchmark::State& state) {
    auto body = prepare(row.length);
    host::collect();
    for (int warming = 0; warming < 2; ++warming) body();  // until memory, caches and names are as in the long run
    for (auto _ : state) body();
    state.counters["goal"] = row.goal;
    state.SetLabel(row.against);
  });
}

// From within the first-level cache to memory.
inline constexpr unsigned long kCurveLengths[] = {3, 10, 32, 100, 1'000, 10'000, 100'000, 1'000'000, 10'000'000};

// The shipped module's native of this name of the class NDArray, or of another class of the package "vesk.math".
void* nativeAddress(const char* method);
template <class Signature>
Signature* native(const char* method) {
  return reinterpret_cast<Signature*>(nativeAddress(method));
}
using UnaryNative = void*(void*);
using BinaryNative = void*(void*, void*);

// The body that calls a native of one operand or of two.
inline auto elementwiseCall(const char* method, bool isBinary, void* lhs, void* rhs) {
  return [=, address = nativeAddress(method)] {
    benchmark::DoNotOptimize(isBinary ? reinterpret_cast<BinaryNative*>(address)(lhs, rhs)
                                      : reinterpret_cast<UnaryNative*>(address)(lhs));
  };
}

// `length` reproducible values in [0.05, 0.95), inside the domain of every function. Different ones per `stream`.
const std::vector<double>& plainDoubles(unsigned long length, int stream = 0);

// An array over the same values, made once per length and stream. `stream` tells several operands apart.
void* doubleArray(unsigned long length, int stream = 0);
// An array of random doubles of `extent` rows and columns.
void* squareMatrix(unsigned long extent, int stream = 0);

// Adds the part that makes a result array like a one-dimensional operand, without its values.
void addResultPart(const Row& row);

// The storage of an array of doubles that has one, and where its values are.
NdArrayDoubleStorage& storageOf(void* array);
double* valuesOf(void* array);

// Memory of the host's own kind for `length` results, written by every part that needs no object.
double* reusedOutput(unsigned long length);

// Keeps the object to the end of the process and returns it.
void* keep(void* object);

// The rows, family by family.
void addAccessRows();
void addElementwiseRows();
void addLibraryRows();
void addReductionRows();
void addMatrixRows();
void addListRows();
void addEigenRows();  // nothing when built without Eigen

}  // namespace bench
