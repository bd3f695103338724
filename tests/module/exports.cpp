// What the module exports for the runtime, besides the natives.
#include "support/natives.h"

namespace {

template <class Function>
Function* exported(const char* name) {
  return reinterpret_cast<Function*>(theModule().symbol(name));
}

}  // namespace

TEST(Exports, countTheElementsOfALists) {
  auto* sizeOf = exported<unsigned long(const ListData&)>("Vesk_listLogicalSizeRuntime");
  EXPECT_EQ(sizeOf(*getListData(packedList(5, {1, 2, 3}))), 3u);
  EXPECT_EQ(sizeOf(*getListData(objectList({nullptr, nullptr}))), 2u);
}

TEST(Exports, refreshTheRememberedExtents) {
  auto* refresh = exported<void(NdArrayMetadata&)>("Vesk_refreshNdArrayShapePrefix");
  void* array = boxedInts({1, 2, 3, 4, 5, 6}, {2, 3});
  addMetadata(array);
  NdArrayMetadata& meta = *getObject(array)->metadata;
  meta.dim0 = meta.dim1 = meta.prefixValid = 0;
  refresh(meta);
  EXPECT_EQ(std::tie(meta.dim0, meta.dim1), std::tuple(2, 3));
  EXPECT_EQ(meta.prefixValid, 1);
}

TEST(Exports, recogniseArrays) {
  auto* isArray = exported<bool(const ObjectInstance*)>("Vesk_isRuntimeNdArrayInstance");
  EXPECT_TRUE(isArray(getObject(doubles({1}))));
  EXPECT_FALSE(isArray(getObject(box("Int", 1))));
  EXPECT_FALSE(isArray(nullptr));
}
