#include "ndarray/doubleBuffer.h"

#include "support/catalogue.h"

namespace {

TEST(DoubleBuffer, followsTheSizeBetweenInlineAndHeapValues) {
  void* array = makeObject("Double boxes 1..40");
  const std::vector<double> values = valuesOf(array);
  const NdArrayDoubleStorage& storage = *ensureNdArrayDoubleStorage(getObject(array));
  for (const long long size : {40, 20, 21, 33, 32, 0, 40, -5, 34}) {
    Vesk_setField_i64(array, "_size", size);
    const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, true, true);
    expectSameDoubles({view.data, view.data + view.count}, {values.begin(), values.begin() + std::max(size, 0LL)});
    EXPECT_EQ(view.data == storage.inlineValues, size <= 32);
  }
}

TEST(DoubleBuffer, neverHandsOutValuesThatWereNotWritten) {
  void* array = arrayOver(boxList("Double", {1, 2}), {2}, kDoubleArray);
  NdArrayDoubleStorage& storage = *ensureNdArrayDoubleStorage(getObject(array));
  storage.count = 2;  // as if a smaller size had left its values on the heap
  storage.heapAllocated = storage.ready = storage.sumValid = 1;
  EXPECT_EQ(readyNdArrayDoubleBuffer(&storage).data, nullptr);
  storage.heapValues = allocateNdArrayDoubleBuffer(2);
  EXPECT_EQ(ensureNdArrayDoubleBuffer(array, true, true).data[1], 2.0);
}

}  // namespace
