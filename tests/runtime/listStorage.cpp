#include "runtime/listStorage.h"

#include <thread>

#include "runtime/listDataLock.h"
#include "support/verbs.h"

namespace {

TEST(ListStorage, growsByDoublingAsFarAsBytesCanBeCounted) {
  EXPECT_EQ(grownListCapacity(3, 5, 4), 6U);
  EXPECT_EQ(grownListCapacity(3, 15UL << 60, 1), 15UL << 60);            // doubling would wrap
  EXPECT_EQ(grownListCapacity(4, (1UL << 60) + 1, 8), (1UL << 60) + 1);  // doubled, it has no byte count
  EXPECT_THROW(grownListCapacity(4, 1UL << 61, 8), std::bad_alloc);
}

TEST(ListStorage, readsNothingPastAnElementOfAnotherWidthThanItsKind) {
  ListData& list = *getListData(packedList(5, {7, -1, 8, -1}));
  list.primitives.elementSize = 8;  // the elements stand apart
  EXPECT_EQ(primitiveListReadI64Runtime(list, 1), 8);
  for (unsigned char kind = 1; kind <= kBooleanKind; ++kind) {
    ListData& narrow = *getListData(packedList(kind, {1, 1}));
    narrow.primitives.elementSize -= 1;
    EXPECT_EQ(primitiveListReadI64Runtime(narrow, 1), 0);
    EXPECT_EQ(primitiveListReadF64Runtime(narrow, 1), 0.0);
  }
}

TEST(ListDataLock, refusesARelockAndNeverBlocksOnTwoListsInOppositeOrder) {
  void* lists[] = {objectList({}), objectList({})};
  for (void* list : lists) host::giveListLock(list);
  ListData &a = *getListData(lists[0]), &b = *getListData(lists[1]);
  {
    const TwoListDataLock once(a, &a);
    EXPECT_THROW(ListDataLock{a}, std::system_error);
    EXPECT_THROW((TwoListDataLock{b, &a}), std::system_error);
    EXPECT_FALSE(host::listLockHeld(lists[1]));
  }
  const auto lockOften = [](ListData& x, ListData& y) {
    for (int i = 0; i < 20000; ++i) const TwoListDataLock both(x, &y);
  };
  std::thread other([&] { lockOften(b, a); });
  lockOften(a, b);
  other.join();
}

}  // namespace
