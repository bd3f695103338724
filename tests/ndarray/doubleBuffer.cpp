#include "ndarray/doubleBuffer.h"

#include "support/catalogue.h"

namespace {

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
