// What the module exports for the runtime, besides the natives.
#include <dlfcn.h>

#include "support/natives.h"

namespace {

template <class Function>
Function* exported(const char* name) {
  return reinterpret_cast<Function*>(theModule().symbol(name));
}

thread_local const std::string* gAskedFor = nullptr;

}  // namespace

// Stands before the host's operation of this name, to see the very string that the module hands over.
std::string baseTypeWithoutGenerics(const std::string& name) {
  constexpr const char* kSymbol = "_Z23baseTypeWithoutGenericsRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
  gAskedFor = &name;
  return reinterpret_cast<std::string (*)(const std::string&)>(dlsym(RTLD_NEXT, kSymbol))(name);
}

TEST(Exports, countTheElementsOfALists) {
  auto* sizeOf = exported<unsigned long(const ListData&)>("Vesk_listLogicalSizeRuntime");
  EXPECT_EQ(sizeOf(*getListData(packedList(5, {1, 2, 3}))), 3u);
  EXPECT_EQ(sizeOf(*getListData(objectList({nullptr, nullptr}))), 2u);
}

TEST(Exports, refreshTheRememberedExtents) {
  void* array = boxedInts({1, 2, 3, 4, 5, 6}, {2, 3});
  addMetadata(array);
  NdArrayMetadata& meta = *getObject(array)->metadata;
  meta.dim0 = meta.dim1 = meta.prefixValid = 0;
  exported<void(NdArrayMetadata&)>("Vesk_refreshNdArrayShapePrefix")(meta);
  EXPECT_EQ(std::tie(meta.dim0, meta.dim1, meta.prefixValid), std::tuple(2, 3, 1));
}

// The string that stands for "no type name" is one object for the host, the shipped module and everybody else.
TEST(Exports, recogniseArraysByTheirNames) {
  auto* isArray = exported<bool(const ObjectInstance*)>("Vesk_isRuntimeNdArrayInstance");
  EXPECT_TRUE(isArray(getObject(doubles({1}))));
  EXPECT_FALSE(isArray(getObject(box("Int", 1))) || isArray(nullptr));
  const ObjectInstance nameless{};
  EXPECT_FALSE(isArray(&nameless));
  EXPECT_EQ(gAskedFor, &RuntimeTypeName().get());
}
