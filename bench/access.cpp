// Single elements of a ready buffer, and results so small that making the object is the work.
#include "harness.h"
#include "machineLimits.h"

namespace bench {
namespace {

constexpr unsigned long kExtent = 32;
constexpr unsigned long kLength = kExtent * kExtent;

// A call through a pointer that the optimizer cannot look behind.
double (*volatile gEmptyCall)(void*, long long) = emptyCall;

void addEmptyCall(const Row& row) {
  addPart(row, "limit", [](unsigned long) {
    return [call = gEmptyCall, i = 0LL]() mutable { benchmark::DoNotOptimize(call(nullptr, i++)); };
  });
}

// An accessor at one index after the other; `call(array, index)` makes the call. Beside it the three look-ups that
// every accessor asks of the host.
template <class Call>
void addAccessor(const char* name, double goal, void* (*operand)(unsigned long, int), unsigned long length, Call call) {
  const Row row{name, length, goal, "an empty call"};
  addPart(row, "native", [=](unsigned long extent) {
    return [=, array = operand(extent, 0), i = 0UL]() mutable { call(array, static_cast<long long>(i++ % kExtent)); };
  });
  addPart(row, "host", [=](unsigned long extent) {
    return [array = operand(extent, 0)] {
      benchmark::DoNotOptimize(hasObjectMagic(array));
      benchmark::DoNotOptimize(currentNdArrayDoubleStorage(getObject(array)));
    };
  });
  addEmptyCall(row);
}

void addSmallResult(const char* name, unsigned long length, const char* method, bool isBinary) {
  // 100 ns where an empty call takes 2.3 ns, in calls.
  const Row row{name, length, 100 / 2.3, "an empty call"};
  addPart(row, "native", [=](unsigned long count) {
    return elementwiseCall(method, isBinary, doubleArray(count, 0), doubleArray(count, 1));
  });
  addEmptyCall(row);
}

}  // namespace

void addAccessRows() {
  auto* const get1D = native<double(void*, long long)>("getDouble1DNative");
  auto* const get2D = native<double(void*, long long, long long)>("getDouble2DNative");
  auto* const set1D = native<void(void*, long long, double)>("setDouble1DNative");
  auto* const set2D = native<void(void*, long long, long long, double)>("setDouble2DNative");
  auto* const getFlat = native<void*(void*, long long)>("getFlatNative");
  auto* const setFlat = native<void(void*, long long, void*)>("setFlatNative");
  void* const box = keep(Vesk_boxDouble(0.5));

  addAccessor("access/get 1D", 3, doubleArray, kLength,
              [=](void* array, long long i) { benchmark::DoNotOptimize(get1D(array, i)); });
  addAccessor("access/get 2D", 3, squareMatrix, kExtent,
              [=](void* array, long long i) { benchmark::DoNotOptimize(get2D(array, 1, i)); });
  addAccessor("access/set 1D", 3, doubleArray, kLength, [=](void* array, long long i) { set1D(array, i, 0.5); });
  addAccessor("access/set 2D", 3, squareMatrix, kExtent, [=](void* array, long long i) { set2D(array, 1, i, 0.5); });
  addAccessor("access/get boxed", 0, doubleArray, kLength,
              [=](void* array, long long i) { benchmark::DoNotOptimize(getFlat(array, i)); });
  addAccessor("access/set boxed", 0, doubleArray, kLength, [=](void* array, long long i) { setFlat(array, i, box); });

  for (const unsigned long length : {3UL, 32UL}) {
    addSmallResult("small/add", length, "_addNative", true);
    addSmallResult("small/sqrt", length, "_sqrtNative", false);
  }
}

}  // namespace bench
