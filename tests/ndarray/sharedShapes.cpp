#include "ndarray/sharedShapes.h"

#include <algorithm>
#include <thread>

#include "support/verbs.h"

namespace {

// The shared objects live in the storage of the library under test, which the host must scan as it scans a module.
const bool kRegistered = (host::registerModuleImage(reinterpret_cast<const void*>(&sharedNdArrayShapeMetadata)), true);

using Pair = std::pair<void*, void*>;  // shape and strides

Pair listsFor(const std::vector<unsigned long>& dims) {
  Pair pair{};
  sharedNdArrayShapeMetadata(dims, pair.first, pair.second);
  return pair;
}

TEST(SharedShapes, areSharedAsFarAsTwoExtentsFitIntoAKey) {
  const unsigned long wide = 1UL << 32;
  for (const std::vector<unsigned long>& dims : {std::vector{0UL}, {wide}, {wide - 1, 2}, {2, wide}, {wide, 2}, {}}) {
    const Pair lists = listsFor(dims);
    expectSameDoubles(valuesOf(keep(lists.first)), {dims.begin(), dims.end()});
    EXPECT_EQ(valuesOf(keep(lists.second)).size(), dims.size());
    listsFor({9, 9});
    EXPECT_EQ(listsFor(dims) == lists, dims.size() == 1 || (dims.size() == 2 && std::max(dims[0], dims[1]) < wide));
  }
}

TEST(SharedShapes, listsOfItemsHoldThemInOrder) {
  std::vector<void*> boxes;
  for (int i = 0; i < 40; ++i) boxes.push_back(box("Int", i));
  const std::vector<void*, VeskGcAllocator<void*>> items(boxes.begin(), boxes.end());  // nobody keeps its buffer
  const SmallObjectVector& made = getListData(keep(makeRuntimeArrayListWithItems(items)))->objects;
  EXPECT_EQ(std::vector<void*>(made.data, made.data + made.size), boxes);
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

}  // namespace
