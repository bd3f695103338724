#include "reductions/sort.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

#include "ndarray/recognition.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"

namespace {

constexpr unsigned long kInsertionSortLimit = 32;

// An object item with its key, which is read once, before any item moves.
template <class Key>
struct KeyedItem {
  Key key;
  void* item;
};

template <class Key>
Key keyOf(const KeyedItem<Key>& element) {
  return element.key;
}
template <class Value>
Value keyOf(Value value) {
  return value;
}

// Stable; a NaN, which compares greater than nothing, stays where it is and divides the elements.
template <class Element>
void insertionSort(Element* elements, unsigned long count) {
  for (unsigned long i = 1; i < count; ++i) {
    const Element moving = elements[i];
    unsigned long to = i;
    for (; to > 0 && keyOf(elements[to - 1]) > keyOf(moving); --to) elements[to] = elements[to - 1];
    elements[to] = moving;
  }
}

// Moves elements with NaN keys behind all others, both in their order, and returns where they begin: with NaNs among
// them `<` is no order that std::sort may be given.
template <class Element>
Element* moveNansBehind(Element* begin, Element* end) {
  if constexpr (std::is_floating_point_v<decltype(keyOf(*begin))>) {
    Element* firstNan = std::find_if(begin, end, [](const Element& element) { return std::isnan(keyOf(element)); });
    return std::stable_partition(firstNan, end, [](const Element& element) { return !std::isnan(keyOf(element)); });
  }
  return end;
}

template <class Element>
void sortAscending(Element* elements, unsigned long count) {
  if (count <= kInsertionSortLimit) return insertionSort(elements, count);
  std::sort(elements, moveNansBehind(elements, elements + count),
            [](const Element& x, const Element& y) { return keyOf(x) < keyOf(y); });
}

// Packed elements of one kind. A list whose element width is not its kind's is left as it is; one whose bytes do not
// lie on the type's alignment is sorted in a copy.
template <class Kind>
void sortPacked(SmallPrimitiveBuffer& elements) {
  using Stored = typename Kind::Stored;
  if (elements.elementSize != Kind::kWidth || elements.size < 2) return;
  if (reinterpret_cast<std::uintptr_t>(elements.data) % alignof(Stored) == 0) {
    return sortAscending(reinterpret_cast<Stored*>(elements.data), elements.size);
  }
  std::vector<Stored> aligned(elements.size);
  std::memcpy(aligned.data(), elements.data, elements.size * sizeof(Stored));
  sortAscending(aligned.data(), aligned.size());
  std::memcpy(elements.data, aligned.data(), elements.size * sizeof(Stored));
}

// Null and foreign items have key 0.
double floatingKey(void* item) { return hasObjectMagic(item) ? Vesk_getField_double(item, "_value") : 0.0; }
long long integerKey(void* item) { return hasObjectMagic(item) ? Vesk_getField_i64(item, "_value") : 0; }

template <class Key>
void sortItemsBy(SmallObjectVector& items, Key (*readKey)(void*)) {
  KeyedItem<Key> few[kInsertionSortLimit];
  std::vector<KeyedItem<Key>> many(items.size <= kInsertionSortLimit ? 0 : items.size);
  KeyedItem<Key>* pairs = many.empty() ? few : many.data();
  for (unsigned long i = 0; i < items.size; ++i) pairs[i] = {readKey(items.data[i]), items.data[i]};
  sortAscending(pairs, items.size);
  // The items are reachable from the list alone: nothing may collect between the first store and the last.
  for (unsigned long i = 0; i < items.size; ++i) items.data[i] = pairs[i].item;
}

// The first item that is not null decides for all.
bool itemsHaveFloatingKeys(const SmallObjectVector& items) {
  void** end = items.data + items.size;
  void** first = std::find_if(items.data, end, [](void* item) { return item != nullptr; });
  if (first == end || !hasObjectMagic(*first)) return false;
  const char* name = Vesk_objectTypeName(*first);
  if (name == nullptr) return false;
  const std::string_view typeName = name;
  return typeName == "Float" || typeName == "Double" || typeName == "vesk.Float" || typeName == "vesk.Double";
}

void sortItems(SmallObjectVector& items) {
  if (items.size < 2) return;
  itemsHaveFloatingKeys(items) ? sortItemsBy(items, floatingKey) : sortItemsBy(items, integerKey);
}

// Nothing here allocates, so neither the array nor its list needs a slot.
void sortDataList(void* array) {
  void* data = Vesk_getField_ptr(array, "_data");
  if (data == nullptr) return;
  ListData& list = *getListData(data);
  const ListDataLock lock(list);
  visitElementKind(
      list.primitiveKind, [&](auto kind) { sortPacked<decltype(kind)>(list.primitives); },
      [&] { sortItems(list.objects); });
}

long long rankOf(void* array) {
  const ObjectInstance* instance = instanceOf(array);
  if (instance != nullptr && instance->metadata != nullptr) return instance->metadata->ndim;
  return Vesk_getField_i64(array, "_ndim");
}

}  // namespace

void* sortNdArray(void* array) {
  if (array == nullptr) return nullptr;
  if (rankOf(array) == 1) {
    sortNdArray1D(array);
  } else {
    Vesk_raise(kValueException, "sort() without axis requires a 1D NDArray");
  }
  return array;
}

void sortNdArray1D(void* array) {
  if (array == nullptr) return;
  NdArrayDoubleBufferView view = readyNdArrayDoubleBuffer(currentNdArrayDoubleStorage(instanceOf(array)));
  if (view.data == nullptr) view = ensureNdArrayDoubleBuffer(array, true, true);
  view.data != nullptr ? sortNdArrayDoubleBufferAscending(view) : sortDataList(array);
}

void sortNdArrayDoubleBufferAscending(NdArrayDoubleBufferView view) { sortAscending(view.data, view.count); }
