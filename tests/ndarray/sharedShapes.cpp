#include "ndarray/sharedShapes.h"

#include <atomic>
#include <future>
#include <thread>

#include "ndarray/shapes.h"
#include "support/verbs.h"

namespace {

// The shared objects live in the storage of the library under test, which the host must scan as it scans a module.
const bool kRegistered = [] {
  host::registerModuleImage(reinterpret_cast<const void*>(&sharedNdArrayShapeMetadata));
  return true;
}();

using Pair = std::pair<void*, void*>;  // shape and strides

Pair listsFor(const std::vector<unsigned long>& dims) {
  Pair pair{};
  sharedNdArrayShapeMetadata(dims, pair.first, pair.second);
  return pair;
}

TEST(SharedShapes, holdTheExtentsAndStayTheSameObjects) {
  const unsigned long wide = 1UL << 32;
  for (const std::vector<unsigned long>& dims :
       {std::vector{0UL}, {1}, {255}, {256}, {3, 4}, {4, 3}, {wide - 1, 2}, {2, wide}, {2, 3, 4}, {}}) {
    const Pair lists = listsFor(dims);
    EXPECT_NE(keep(lists.first), keep(lists.second));
    const std::vector<unsigned long> strides = rowMajorStridesForShape(dims);
    expectSameDoubles(valuesOf(lists.first), {dims.begin(), dims.end()});
    expectSameDoubles(valuesOf(lists.second), {strides.begin(), strides.end()});
    listsFor({9, 9});
    EXPECT_EQ(listsFor(dims) == lists, dims.size() == 1 || (dims.size() == 2 && dims[1] != wide));
  }
  void* one = getListData(sharedStride1ArrayListObject())->objects.data[0];
  EXPECT_EQ(getListData(sharedShape1DArrayListObject(1))->objects.data[0], one);
  EXPECT_EQ(getListData(listsFor({5, 6, 1}).second)->objects.data[2], one);
}

// Whether a few pairs more than the bound leave just the bound, and one of the thread's own. Ends the process.
[[noreturn]] void judgeTheBound() {
  host::setStressMode(false);
  std::vector<void*> shapes;
  for (unsigned long rows = 1; rows <= 2060; ++rows) shapes.push_back(keep(listsFor({rows, 8}).first));
  unsigned long same = 0;
  for (unsigned long rows = 1; rows <= 2060; ++rows) same += listsFor({rows, 8}).first == shapes[rows - 1] ? 1 : 0;
  const Pair last = listsFor({5000, 5000});
  const bool remembered = listsFor({5000, 5000}) == last;
  std::thread([&] {
    const host::AttachedThread attached;
    std::_Exit(same == 2048 && remembered && listsFor({5000, 5000}) != last ? 0 : 1);
  }).join();
  std::abort();
}

TEST(SharedShapesDeathTest, keepTwoThousandAndFortyEightPairsAndTheThreadsLast) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";  // a process of its own, whose cache starts empty
  EXPECT_EXIT(judgeTheBound(), testing::ExitedWithCode(0), "");
}

TEST(SharedShapes, areOneForEightThreadsThatRaceForThem) {
  for (const std::vector<unsigned long>& dims : {std::vector{201UL}, {60001UL}, {601UL, 602UL}}) {
    std::atomic<int> waiting{8};
    const auto race = [&] {
      const host::AttachedThread attached;
      for (--waiting; waiting != 0;) std::this_thread::yield();
      return listsFor(dims);
    };
    std::vector<std::future<Pair>> pairs(8);
    for (auto& pair : pairs) pair = std::async(std::launch::async, race);
    for (auto& pair : pairs) EXPECT_EQ(pair.get(), listsFor(dims));
    expectSameDoubles(valuesOf(listsFor(dims).first), {dims.begin(), dims.end()});
  }
}

}  // namespace
