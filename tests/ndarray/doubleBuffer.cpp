#include "ndarray/doubleBuffer.h"

#include <numeric>

#include "support/verbs.h"

namespace {

NdArrayDoubleStorage& storageOf(void* array) { return *ensureNdArrayDoubleStorage(getObject(array)); }

TEST(DoubleBuffer, followsTheSizeBetweenInlineAndHeapValues) {
  Numbers values(40);
  std::iota(values.begin(), values.end(), 1.0L);
  void* array = arrayOver(boxList("Double", values), {40}, kDoubleArray);
  for (const long long size : {40, 20, 21, 33, 32, 0, 40, -5, 34}) {
    Vesk_setField_i64(array, "_size", size);
    const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, true, true);
    expectSameDoubles({view.data, view.data + view.count}, {values.begin(), values.begin() + std::max(size, 0LL)});
    EXPECT_EQ(view.data == storageOf(array).inlineValues, size <= 32);
  }
  Vesk_setField_i64(array, "_size", 35);
  host::failAllocation(1, host::Failing::ForEver);
  EXPECT_THROW(ensureNdArrayDoubleBuffer(array, true, true), std::bad_alloc);
  EXPECT_TRUE(host::endFailing());
  EXPECT_EQ(storageOf(array).count, 34U);
}

TEST(DoubleBuffer, neverHandsOutValuesThatWereNotWritten) {
  void* array = arrayOver(boxList("Double", {1, 2}), {2}, kDoubleArray);
  NdArrayDoubleStorage& storage = storageOf(array);
  storage.count = 2;  // as if a smaller size had left its values on the heap
  storage.heapAllocated = storage.ready = storage.sumValid = 1;
  EXPECT_EQ(readyNdArrayDoubleBuffer(&storage).data, nullptr);
  storage.heapValues = allocateNdArrayDoubleBuffer(2);
  EXPECT_EQ(ensureNdArrayDoubleBuffer(array, true, true).data[1], 2.0);
}

}  // namespace
