#include "ndarray/recognition.h"

#include "ndarray/numericProfile.h"
#include "ndarray/resultArray.h"
#include "support/verbs.h"

namespace {

TEST(Recognition, knowsArraysAndArraysOfDoublesByTheirNames) {
  host::addTypeAlias("Grid", "vesk.math.NDArray");
  const std::vector<const char*> names[] = {
      {kDoubleArray, "vesk.math.NDArray__T_Double", "Grid<vesk.Double>"},               // arrays of doubles
      {"vesk.math.NDArray", "NDArray", "NDArray<Float>", "my.NDArray__T_"},             // other arrays
      {"vesk.math.NDArrayView", "vesk.math.ndarray", "other.NDArray<Double>", "Map"}};  // no arrays
  for (int group = 0; group < 3; ++group)
    for (const char* name : names[group]) {
      SCOPED_TRACE(name);
      void* object = keep(Vesk_allocObject(name));
      EXPECT_EQ(isRuntimeNdArrayInstance(getObject(object)), group < 2);
      for (int round = 0; round < 2; ++round) {  // by name, then by the answer in the record
        EXPECT_EQ(isRuntimeNdArrayObject(object), group < 2);
        EXPECT_EQ(ndArrayUsesNativeDoubleBuffer(object), group == 0);
      }
    }
  long long foreign[8] = {};
  EXPECT_FALSE(isRuntimeNdArrayObject(foreign) || ndArrayUsesNativeDoubleBuffer(foreign));
}

TEST(Recognition, looksAtTheNamesOncePerArrayAndOncePerResultName) {
  void* source = doubles({1, 2});
  RootSlot result;
  makeNdArrayDoubleResult(result, source, kDoubleArray, false, 2);
  EXPECT_TRUE(ndArrayUsesNativeDoubleBuffer(source));
  const host::OperationCounter asked;
  EXPECT_TRUE(ndArrayUsesNativeDoubleBuffer(source) && isRuntimeNdArrayObject(source));
  for (const bool sameType : {true, false})
    EXPECT_EQ(makeNdArrayDoubleResult(result, source, kDoubleArray, sameType, 2).count, 2U);
  EXPECT_EQ(asked.counts().typeNames, 0U);
  const unsigned long operations = asked.counts().operations;
  EXPECT_NE(ensureNdArrayDoubleBuffer(source, true, true).data, nullptr);
  EXPECT_EQ(asked.counts().operations, operations + 3);  // the object, its record, its storage
}

TEST(NumericProfile, goesByTheKindOrTheFirstItem) {
  using enum NdArrayNumericKind;
  long long foreign[8] = {};
  using Case = std::tuple<void*, NdArrayNumericKind, const char*>;
  for (const auto& [list, kind, typeName] :
       {Case{packedList(11, {1}, false), Boolean, "Boolean"}, Case{packedList(2, {1}, false), Integer, "Int"},
        Case{packedList(2, {}), Integer, "Byte"}, Case{packedList(9, {1}, false), Floating, "Double"},
        Case{packedList(9, {1}), Floating, "Float"}, Case{objectList({nullptr}), Floating, "Double"},
        Case{objectList({nullptr, box("ULong", 3), box("Double", 2.5)}), Integer, "ULong"},
        Case{boxList("Boolean", {1}), Boolean, "Boolean"}, Case{boxList("Float", {1}), Floating, "Float"},
        Case{objectList({foreign}), None, "Double"}, Case{objectList({objectList({})}), None, "Double"}}) {
    const NdArrayNumericProfile profile = detectNdArrayNumericProfile(*getListData(list));
    EXPECT_TRUE(profile.kind == kind && profile.typeName == typeName) << profile.typeName;
  }
}

}  // namespace
