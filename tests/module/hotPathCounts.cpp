// What the hot paths ask of the host, exactly: a count that goes up is a slower call.
#include "support/natives.h"
#include "support/verbs.h"

namespace {

template <class Signature>
Signature* native(const char* method) {
  return reinterpret_cast<Signature*>(theModule().native("vesk.math", "NDArray", method));
}

// The counts of one call in a line. The operand's data list is locked meanwhile, so a call that took its lock would
// throw.
template <class Call>
std::string countsOf(void* operand, Call call) {
  ListData& list = dataOf(operand);
  if (list.mutex == nullptr) host::giveListLock(Vesk_getField_ptr(operand, "_data"));
  pthread_mutex_lock(list.mutex);
  const host::OperationCounter asked;
  call();
  const host::OperationCounts counts = asked.counts();
  pthread_mutex_unlock(list.mutex);
  const auto counted = [&](const char* what, auto count) { return what + std::to_string(counts.*count); };
  using Counts = host::OperationCounts;
  return counted("operations ", &Counts::operations) + counted(", allocations ", &Counts::allocations) +
         counted(", slots ", &Counts::rootSlots) + counted(", type names ", &Counts::typeNames) +
         counted(", fields ", &Counts::fieldAccesses);
}

TEST(HotPath, elementsOfAReadyBufferTakeThreeLookUpsAndNothingElse) {
  void* row = doubles({1, 2, 3});
  void* matrix = doubles({1, 2, 3, 4}, {2, 2});
  const char* bare = "operations 3, allocations 0, slots 0, type names 0, fields 0";
  EXPECT_EQ(countsOf(row, [=] { native<double(void*, long long)>("getDouble1DNative")(row, -1); }), bare);
  EXPECT_EQ(countsOf(row, [=] { native<void(void*, long long, double)>("setDouble1DNative")(row, 1, 5); }), bare);
  const auto get2D = native<double(void*, long long, long long)>("getDouble2DNative");
  const auto set2D = native<void(void*, long long, long long, double)>("setDouble2DNative");
  EXPECT_EQ(countsOf(matrix, [=] { get2D(matrix, 1, -1); }), bare);
  EXPECT_EQ(countsOf(matrix, [=] { set2D(matrix, 1, 0, 5); }), bare);
}

TEST(HotPath, resultsLookAtNamesOnceAndAreMadeInFourAllocations) {
  void* array = doubles({1, 2, 3});
  const auto add = native<void*(void*, void*)>("_addNative");
  const auto sqrt = native<void*(void*)>("_sqrtNative");
  const auto sum = native<void*(void*)>("sumNative");
  add(array, array), sqrt(array), sum(array);  // the names of this array and of its results are known from here on
  EXPECT_EQ(countsOf(array, [=] { add(array, array); }),
            "operations 20, allocations 4, slots 3, type names 1, fields 0");
  EXPECT_EQ(countsOf(array, [=] { sqrt(array); }), "operations 15, allocations 4, slots 2, type names 1, fields 0");
  EXPECT_EQ(countsOf(array, [=] { sum(array); }), "operations 6, allocations 1, slots 0, type names 0, fields 0");
}

}  // namespace
