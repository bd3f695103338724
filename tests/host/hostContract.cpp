// The host's own promises: what it keeps and frees, how it fails, and what it notices about a module.
#include <new>
#include <system_error>
#include <thread>

#include "runtime/listDataLock.h"
#include "runtime/rootSlot.h"
#include "support/verbs.h"

namespace {

// Looks at and changes freed memory behind the back of a sanitizer.
__attribute__((no_sanitize("address"), noinline)) unsigned char exchangeByte(volatile unsigned char* at,
                                                                             unsigned char value) {
  const unsigned char before = *at;
  *at = value;
  return before;
}

TEST(Host, keepsWhatSlotsAndHandlesReachThroughScannedBlocks) {
  const RootSlot scanned(Vesk_gcAlloc(16));
  void* atomic = keep(Vesk_gcAllocAtomic(16));
  auto** items = static_cast<void**>(scanned.get());
  items[0] = items[1] = nullptr;
  void* kept = items[1] = Vesk_boxInt(1);
  items[1] = static_cast<char*>(kept) + 40;  // an address inside counts
  void* lost = *static_cast<void**>(atomic) = Vesk_boxInt(2);
  EXPECT_TRUE(hasObjectMagic(kept) && hasObjectMagic(lost) && !hasObjectMagic(items[1]) && !hasObjectMagic(items));
  host::collect();
  EXPECT_TRUE(hasObjectMagic(kept) && !hasObjectMagic(lost));
  void* locked[] = {keep(host::newObjectList()), host::newObjectList()};
  for (void* list : locked) host::giveListLock(list);
  host::collect();
  EXPECT_TRUE(hasObjectMagic(locked[0]) && !hasObjectMagic(locked[1]));
}

TEST(Host, showsEveryUseOfFreedMemory) {
  for (unsigned long bytes : {8UL, 5000UL, 40UL << 10, 3UL << 20}) {
    auto* block = static_cast<unsigned char*>(Vesk_gcAllocAtomic(bytes));
    block[0] = 1;
    host::collect();
    EXPECT_EQ(exchangeByte(block, 0xDB), 0xDB) << bytes;
  }
  auto* box = static_cast<unsigned char*>(Vesk_boxInt(7));
  host::collect();
  const unsigned char freed = exchangeByte(box + 20, 1);
  EXPECT_EQ(host::checkHeap().value_or(""), "memory was written after it was freed");
  exchangeByte(box + 20, freed);
}

// Operations that may collect, and how each fails.
enum class Fails { WithNull, WithBadAlloc, Never };
struct Operation {
  Fails fails;
  void* (*call)(void* array);
};
void* primitiveList(void* array) {
  RootSlot list(array);
  void* data = vesk_collections_ArrayList_newPrimitiveData(100, "Int", list.address());
  return (data == nullptr) == (list.get() == nullptr) ? data : nullptr;
}
const Operation kOperations[] = {
    {Fails::WithBadAlloc, [](void*) { return Vesk_allocObject("ArrayList"); }},
    {Fails::WithBadAlloc, [](void* array) { return sumNumericCollection(array, "Double"); }},
    {Fails::WithBadAlloc, [](void* array) -> void* { return ensureNdArrayMetadata(getObject(array)); }},
    {Fails::Never, [](void* array) -> void* { return ensureNdArrayMetadata(getObject(array)); }},
    {Fails::WithNull, [](void* array) -> void* { return ensureNdArrayDoubleStorage(getObject(array)); }},
    {Fails::Never, [](void* array) -> void* { return ensureNdArrayDoubleStorage(getObject(array)); }},
    {Fails::WithNull, [](void*) -> void* { return allocateInlineNdArrayDoubleObject(kDoubleArray); }},
    {Fails::WithNull, [](void*) { return Vesk_gcAlloc(0); }},
    {Fails::WithNull, primitiveList},
    {Fails::Never, [](void* array) { return ensureObjectFinalizerRegistered(getObject(array)), array; }},
    {Fails::Never, [](void* array) { return Vesk_setField_i64(array, "_size", 1), array; }},
};

TEST(Host, everyAllocatingOperationFailsWhenToldAndCollectsUnderStress) {
  const bool stress = host::stressMode();
  void* array = keep(Vesk_allocObject(kDoubleArray));
  for (const Operation& operation : kOperations) {
    SCOPED_TRACE(&operation - kOperations);
    host::failAllocation(1, host::Failing::Once);
    if (operation.fails == Fails::WithBadAlloc) {
      EXPECT_THROW(operation.call(array), std::bad_alloc);
    } else {
      EXPECT_EQ(operation.call(array) == nullptr, operation.fails == Fails::WithNull);
    }
    EXPECT_EQ(host::endFailing(), operation.fails != Fails::Never);
    host::setStressMode(true);
    const unsigned long before = host::heapCounts().collections;
    EXPECT_NE(operation.call(array), nullptr);
    EXPECT_GT(host::heapCounts().collections, before);
    host::setStressMode(stress);
  }
}

TEST(Host, collectsBeforeItsLimitMakesARequestFail) {
  host::collect();
  host::setHeapLimit(host::heapCounts().liveBytes + (8UL << 20));
  for (unsigned long tooMuch : {9UL << 20, 1UL << 46, ~0UL}) EXPECT_EQ(Vesk_gcAllocAtomic(tooMuch), nullptr);
  for (int i = 0; i < 4; ++i) EXPECT_NE(Vesk_gcAllocAtomic(5UL << 20), nullptr);  // finds the one before dead
  keep(Vesk_gcAllocAtomic(5UL << 20));
  EXPECT_EQ(Vesk_gcAllocAtomic(5UL << 20), nullptr);
  host::setHeapLimit(64UL << 30);
}

TEST(Host, noticesWhatANativeCallLeavesBehind) {
  const host::NativeCallCheck check;
  const auto problem = [&check] { return check.problem().value_or(""); };
  void* slots[2] = {};
  for (void*& slot : slots) Vesk_gcRegisterRootSlot(&slot);
  EXPECT_EQ(problem(), "0 root slots before the call, 2 after it");
  for (void*& slot : slots) Vesk_gcUnregisterRootSlot(&slot);  // oldest first
  EXPECT_EQ(problem(), "a root slot was released out of order");
  void* list = host::newObjectList();
  host::giveListLock(list);
  pthread_mutex_lock(getListData(list)->mutex);
  EXPECT_EQ(problem(), "a list lock is still held");
  EXPECT_THROW(const ListDataLock again(*getListData(list)), std::system_error);  // reported, no hang
  host::collect();
  EXPECT_EQ(problem(), "a list was found dead while its lock was held");
  Vesk_raise("TypeError", "message");
  getObject(nullptr);
  EXPECT_EQ(problem(), "the module went on after a raise");
  EXPECT_EQ(leftovers(), "pending message");
  EXPECT_DEATH(std::thread([] { Vesk_boxInt(1); }).join(), "Vesk_boxInt on a thread that is not attached");
}

TEST(Host, findsTheFirstArgumentInEveryFormOfATypeName) {
  for (const char* name : {"a.b.C<vesk.Double>", "C__T_Double", "C< Double? >", "C<Double<B>,A>", "C__T_Int<Double>"})
    EXPECT_EQ(firstGenericArgShortType(name), "Double") << name;
}

}  // namespace
