#include "ndarray/shapes.h"

#include "support/verbs.h"

namespace {

TEST(Shapes, areEqualByTheirExtentsHoweverTheseAreKept) {
  const auto arrayWith = [](void* shapeList, int rank, bool withMetadata) {
    void* array = boxedInts({1, 2, 3, 4, 5, 6}, {2, 3});
    Vesk_setField_i64(array, "_ndim", rank);
    Vesk_setField_ptr(array, "_shape", shapeList);
    if (withMetadata) addMetadata(array);
    return array;
  };
  void* list = boxList("Long", {2, 3, 4});
  using Case = std::tuple<void*, void*, int, int, bool>;  // shape lists, ranks, equal
  for (const auto& [shapeA, shapeB, rankA, rankB, equal] :
       {Case{list, list, 3, 3, true}, Case{list, packedList(10, {2.5, 3, 4}), 3, 3, true},
        Case{list, packedList(6, {2, 3, 5}), 3, 3, false}, Case{list, list, 3, 2, false},
        Case{list, boxList("UInt", {2, 3}), 3, 3, false}, Case{nullptr, nullptr, 3, 3, false},
        Case{boxList("UInt", {2, 3}), boxList("UInt", {3, 2}), 2, 2, false},
        Case{objectList({}), objectList({}), 0, 0, true},
        Case{objectList({nullptr, nullptr, box("Int", 1)}), packedList(5, {0, 0, 1}), 3, 3, true}})
    for (const int metadata : {0, 1, 2, 3})
      EXPECT_EQ(shapeEqualsNdArray(arrayWith(shapeA, rankA, (metadata & 1) != 0),
                                   arrayWith(shapeB, rankB, (metadata & 2) != 0)),
                equal)
          << metadata;
}

}  // namespace
