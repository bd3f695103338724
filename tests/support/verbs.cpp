#include "support/verbs.h"

#include <bit>
#include <cmath>
#include <cstring>

#include "runtime/listStorage.h"

namespace {

std::vector<host::Handle>& kept() {
  thread_local std::vector<host::Handle> handles;
  return handles;
}

// Unsigned values above the signed range keep their 64 bits.
long long integerBits(Number value) {
  return value < 0 ? static_cast<long long>(value) : static_cast<long long>(static_cast<unsigned long long>(value));
}

}  // namespace

void* keep(void* object) {
  kept().emplace_back(object);
  return object;
}

void releaseKept() { kept().clear(); }

void* box(const std::string& shortTypeName, Number value) {
  if (shortTypeName == "Boolean") return keep(Vesk_boxBool(value != 0));
  if (shortTypeName == "Float" || shortTypeName == "Double")
    return keep(boxFloatingLikeLocal(shortTypeName, static_cast<double>(value)));
  return keep(boxIntegerLikeLocal(shortTypeName, integerBits(value)));
}

void* objectList(const std::vector<void*>& items) {
  void* list = keep(host::newObjectList());
  SmallObjectVector& objects = getListData(list)->objects;
  objects.reserve(items.size());
  for (void* item : items) objects.data[objects.size++] = item;
  return list;
}

void* boxList(const std::string& shortTypeName, const Numbers& values) {
  std::vector<void*> boxes;
  for (Number value : values) boxes.push_back(box(shortTypeName, value));
  return objectList(boxes);
}

void* packedList(unsigned char kind, const Numbers& values, bool named) {
  void* list = keep(host::newPrimitiveList(kind, values.size(), named));
  SmallPrimitiveBuffer& elements = getListData(list)->primitives;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto write = [&](auto element) {
      using Stored = typename decltype(element)::Stored;
      const auto stored =
          element.kIsFloating ? static_cast<Stored>(values[i]) : static_cast<Stored>(integerBits(values[i]));
      element.store(elements.data + i * elements.elementSize, stored);
    };
    visitElementKind(kind, write, [] {});
  }
  return list;
}

void* arrayOver(void* dataList, std::vector<long long> shape, const char* typeName) {
  if (shape.empty())
    shape = {static_cast<long long>(dataList == nullptr ? 0 : listLogicalSize(*getListData(dataList)))};
  Numbers extents;
  Numbers strides(shape.size(), 1);
  long long size = 1;
  for (std::size_t i = shape.size(); i-- > 0; size *= shape[i]) strides[i] = size;
  for (long long extent : shape) extents.push_back(extent);
  void* array = keep(Vesk_allocObject(typeName));
  Vesk_setField_ptr(array, "_data", dataList);
  Vesk_setField_ptr(array, "_shape", boxList("UInt", extents));
  Vesk_setField_ptr(array, "_strides", boxList("UInt", strides));
  Vesk_setField_i64(array, "_ndim", static_cast<long long>(shape.size()));
  Vesk_setField_i64(array, "_size", size);
  return array;
}

void addMetadata(void* array) {
  const long long ndim = Vesk_getField_i64(array, "_ndim");
  const long long size = Vesk_getField_i64(array, "_size");
  void* shape = Vesk_getField_ptr(array, "_shape");
  void* strides = Vesk_getField_ptr(array, "_strides");
  void* data = Vesk_getField_ptr(array, "_data");
  const std::vector<double> extents = shape == nullptr ? std::vector<double>{} : valuesOf(shape);
  NdArrayMetadata& meta = *ensureNdArrayMetadata(getObject(array));
  const auto extent = [&](std::size_t i) { return i < extents.size() ? static_cast<long long>(extents[i]) : 0; };
  meta = {ndim, size, shape, strides, data, extent(0), extent(1), 1};
}

void* doubles(const std::vector<double>& values, std::vector<long long> shape) {
  if (shape.empty()) shape = {static_cast<long long>(values.size())};
  void* array = arrayOver(objectList({}), std::move(shape), kDoubleArray);
  addMetadata(array);
  NdArrayDoubleStorage& storage = *ensureNdArrayDoubleStorage(getObject(array));
  double* target = storage.inlineValues;
  if (values.size() > NdArrayDoubleStorage::kInlineCapacity) {
    ensureObjectFinalizerRegistered(getObject(array));
    target = storage.heapValues = static_cast<double*>(Vesk_gcAllocAtomic(values.size() * sizeof(double)));
    storage.heapAllocated = 1;
  }
  storage.count = values.size();
  if (!values.empty()) std::memcpy(target, values.data(), values.size() * sizeof(double));
  storage.ready = 1;
  return array;
}

void* boxedInts(const Numbers& values, std::vector<long long> shape) {
  return arrayOver(boxList("Int", values), std::move(shape), kIntArray);
}

ListData& dataOf(void* array) { return *getListData(Vesk_getField_ptr(array, "_data")); }

bool sameDouble(double x, double y) {
  return std::bit_cast<unsigned long>(x) == std::bit_cast<unsigned long>(y) || (std::isnan(x) && std::isnan(y));
}

void expectSameDoubles(const std::vector<double>& actual, const std::vector<double>& expected) {
  ASSERT_EQ(actual.size(), expected.size());
  for (std::size_t i = 0; i < actual.size(); ++i)
    EXPECT_TRUE(sameDouble(actual[i], expected[i])) << "element " << i << ": " << actual[i] << " != " << expected[i];
}

std::string leftovers() {
  const unsigned long slots = host::rootSlotCount();
  const auto pending = host::takeException();
  return (slots == 0 ? "" : std::to_string(slots) + " root slots; ") + (pending ? "pending " + pending->message : "");
}
