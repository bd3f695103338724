#include "runtime/listStorage.h"

#include "runtime/hostOperations.h"

namespace {

void dropObjectItems(SmallObjectVector& items) {
  if (items.size != 0) std::memset(items.data, 0, items.size * sizeof(void*));
  items.size = 0;
}

}  // namespace

const std::string& listElementTypeName(const ListData& list, const std::string& unnamed) {
  return list.elementTypeName.holdsName() ? list.elementTypeName.get() : unnamed;
}

void* boxPrimitiveElement(const ListData& list, unsigned long index, const std::string& typeName) {
  return visitElementKind(
      list.primitiveKind,
      [&](auto kind) -> void* {
        if constexpr (kind.kIsBoolean) return Vesk_boxBool(primitiveListReadI64Runtime(list, index) != 0);
        if constexpr (kind.kIsFloating) return boxFloatingLikeLocal(typeName, primitiveListReadF64Runtime(list, index));
        return boxIntegerLikeLocal(typeName, primitiveListReadI64Runtime(list, index));
      },
      []() -> void* { return nullptr; });
}

void materializePrimitiveI64ListRuntime(ListData& list) {
  if (list.primitiveKind == kObjectListKind) return;
  const std::string unnamed = "Int";  // for every kind, floating ones too
  const std::string& typeName = listElementTypeName(list, unnamed);
  const unsigned long count = list.primitives.size;
  dropObjectItems(list.objects);
  list.objects.reserve(count);
  for (unsigned long i = 0; i < count; ++i) {
    void* box = boxPrimitiveElement(list, i, typeName);
    list.objects.data[i] = box;  // room was made before, so nothing can collect between the box and its store
    list.objects.size = i + 1;
  }
  // The switch comes last: until here, also when an allocation throws, the primitive elements are the list.
  list.primitives.size = 0;
  list.legacyIntegerCount = 0;
  list.legacyDoubleCount = 0;
  list.primitiveKind = kObjectListKind;
  list.elementTypeName.clear();
}

bool listItemsShareSinglePointer(const SmallObjectVector& items, void*& item) {
  if (items.size == 0 || items.data[0] == nullptr) return false;
  item = items.data[0];
  if (items.data[items.size - 1] != item) return false;  // the cheapest disproof first
  for (unsigned long i = 1; i < items.size; ++i) {
    if (items.data[i] != item) return false;
  }
  return true;
}

void resetObjectItems(ListData& list, unsigned long count) {
  dropObjectItems(list.objects);
  if (list.objects.capacity < count) {
    list.objects.reserve(count);  // an empty vector's new block comes back cleared
  } else if (count != 0) {
    std::memset(list.objects.data, 0, count * sizeof(void*));
  }
  list.objects.size = count;
}
