#include "runtime/listStorage.h"

#include <cmath>
#include <thread>

#include "runtime/listDataLock.h"
#include "support/verbs.h"

namespace {

constexpr long long kSmallest = std::numeric_limits<long long>::min();

TEST(ListStorage, growsByDoublingAsFarAsBytesCanBeCounted) {
  EXPECT_EQ(grownListCapacity(3, 5, 4), 6U);
  EXPECT_EQ(grownListCapacity(3, 15UL << 60, 1), 15UL << 60);            // doubling would wrap
  EXPECT_EQ(grownListCapacity(4, (1UL << 60) + 1, 8), (1UL << 60) + 1);  // doubled, it has no byte count
  EXPECT_THROW(grownListCapacity(4, 1UL << 61, 8), std::bad_alloc);
}

TEST(ListStorage, readsEveryKindAsIntegerAndAsDouble) {
  using Case = std::tuple<int, Number, long long, double>;  // kind, stored, as integer, as double
  for (const auto& [kind, stored, integer, real] :
       {Case{1, -128, -128, -128}, Case{2, 255, 255, 255}, Case{3, -32768, -32768, -32768},
        Case{4, 65535, 65535, 65535}, Case{5, -0x1p31L, -2147483648LL, -0x1p31},
        Case{6, 4294967295.0L, 4294967295LL, 4294967295.0}, Case{7, 0x1p53L + 1, 9007199254740993LL, 0x1p53},
        Case{8, 0x1p63L + 1, kSmallest + 1, -0x1p63}, Case{9, -2.75, -2, -2.75}, Case{9, NAN, kSmallest, NAN},
        Case{10, 0x1p63, kSmallest, 0x1p63}, Case{10, -0x1p63, kSmallest, -0x1p63}, Case{10, -0.5, 0, -0.5},
        Case{11, 2, 1, 1.0}, Case{10, 0x1p63 - 1024, 9223372036854774784LL, 0x1p63 - 1024}}) {
    ListData& list = *getListData(packedList(static_cast<unsigned char>(kind), {0, stored}));
    EXPECT_EQ(primitiveListReadI64Runtime(list, 1), integer);
    EXPECT_TRUE(sameDouble(primitiveListReadF64Runtime(list, 1), real));
    list.primitives.elementSize -= 1;  // too narrow for the kind: nothing is read past an element
    EXPECT_TRUE(primitiveListReadI64Runtime(list, 1) == 0 && sameDouble(primitiveListReadF64Runtime(list, 1), 0.0));
  }
  ListData& wide = *getListData(packedList(5, {7, -1, 8, -1}));
  wide.primitives.elementSize = 8;  // wider than the kind: the elements stand apart
  EXPECT_EQ(primitiveListReadI64Runtime(wide, 1), 8);
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
