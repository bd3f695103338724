#include "ndarray/elementAccess.h"

#include <algorithm>
#include <limits>

#include "ndarray/doubleBuffer.h"
#include "ndarray/recognition.h"
#include "ndarray/shapes.h"
#include "ndarray/sharedShapes.h"
#include "runtime/integerRules.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"
#include "runtime/rootSlot.h"

namespace {

constexpr const char* kOutOfBounds = "Index out of bounds";

void raiseOutOfBounds() { Vesk_raise(kIndexException, kOutOfBounds); }

// A negative index is above every count when read as unsigned.
bool isInside(long long index, unsigned long count) { return static_cast<unsigned long>(index) < count; }

// Wraps a negative index once. Whether it is inside the extent then.
bool wrapsInside(long long& index, long long extent) {
  if (index < 0) index = wrapAdd(index, extent);
  return index >= 0 && index < extent;
}

// The same, raising when it is not.
bool wrapIndex(long long& index, long long extent) {
  return wrapsInside(index, extent) || raiseFalse(kIndexException, kOutOfBounds);
}

// Keeps a valid sum up to date by the difference; in this association it is part of the result.
void storeValue(NdArrayDoubleStorage* storage, double& element, double value) {
  if (storage != nullptr && storage->sumValid != 0) storage->cachedSum = (value - element) + storage->cachedSum;
  element = value;
}

void storeBuffered(ObjectInstance* instance, NdArrayDoubleBufferView view, long long index, double value) {
  if (!isInside(index, view.count)) return raiseOutOfBounds();
  storeValue(currentNdArrayDoubleStorage(instance), view.data[index], value);
}

NdArrayDoubleBufferView readyBufferOf(ObjectInstance* instance) {
  return readyNdArrayDoubleBuffer(currentNdArrayDoubleStorage(instance));
}

// The element of a list as an object. Caller holds the list lock and keeps the list rooted.
void* itemAt(const ListData& list, unsigned long index) {
  if (list.primitiveKind == kObjectListKind) return list.objects.data[index];
  const std::string unnamed = isFloatingElementKind(list.primitiveKind) ? "Double" : "Int";
  return boxPrimitiveElement(list, index, listElementTypeName(list, unnamed));
}

// Makes room for the index and for the array's own size, whichever is more; the new items are null.
void growItems(SmallObjectVector& items, long long index, long long size) {
  const long long wanted = index == std::numeric_limits<long long>::max() ? size : std::max(index + 1, size);
  if (wanted <= static_cast<long long>(items.size)) return;
  const auto count = static_cast<unsigned long>(wanted);
  items.reserve(count);
  std::fill(items.data + items.size, items.data + count, nullptr);
  items.size = count;
}

void storeItem(void* array, long long index, void* value) {
  const RootSlot arraySlot(array);
  const RootSlot valueSlot(value);
  const RootSlot list(writableNdArrayDataList(array));
  if (list.get() == nullptr) return raiseOutOfBounds();
  ListData& data = *getListData(list.get());
  const ListDataLock lock(data);
  materializePrimitiveI64ListRuntime(data);
  growItems(data.objects, index, Vesk_getField_i64(array, "_size"));
  if (!isInside(index, data.objects.size)) return raiseOutOfBounds();
  data.objects.data[index] = value;
}

// Rank and element count of an array whose record may be missing.
struct RankAndSize {
  long long rank;
  long long size;
};

RankAndSize rankAndSizeOf(void* array, const ObjectInstance* instance) {
  if (instance != nullptr && instance->metadata != nullptr) {
    return {instance->metadata->ndim, instance->metadata->size};
  }
  const long long size = Vesk_getField_i64(array, "_size");
  return {Vesk_getField_i64(array, "_ndim"), size};
}

// Where an element lies. Raise and return false for a null array, the wrong rank and an index outside.
bool locate1D(void* array, const ObjectInstance* instance, const char* wrongRank, long long& index) {
  if (array == nullptr) return raiseFalse(kIndexException, kOutOfBounds);
  const RankAndSize description = rankAndSizeOf(array, instance);
  if (description.rank != 1) return raiseFalse(kValueException, wrongRank);
  return wrapIndex(index, description.size);
}

// The arithmetic of the flat index wraps; what comes out is checked against the element count later.
bool locate2D(void* array, ObjectInstance* instance, long long row, long long column, long long& flat) {
  if (array == nullptr) return raiseFalse(kIndexException, kOutOfBounds);
  long long rows = 0;
  long long cols = 0;
  if (!snapshotNdArray2DShapeFast(array, instance, rows, cols)) return false;
  if (!wrapIndex(row, rows) || !wrapIndex(column, cols)) return false;
  flat = wrapAdd(wrapMultiply(row, cols), column);
  return true;
}

double readDouble(void* array, ObjectInstance* instance, long long flat) {
  const NdArrayDoubleBufferView view = readyBufferOf(instance);
  if (view.data != nullptr && isInside(flat, view.count)) return view.data[flat];
  double value = 0.0;
  readNdArrayDoubleFlat(array, flat, value);
  return value;
}

void writeDouble(void* array, ObjectInstance* instance, long long flat, double value) {
  const NdArrayDoubleBufferView ready = readyBufferOf(instance);
  if (ready.data != nullptr) return storeBuffered(instance, ready, flat, value);
  const RootSlot root(array);
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, true, true);
  if (view.data != nullptr) return storeBuffered(instance, view, flat, value);
  setNdArrayFlat(array, flat, Vesk_boxDouble(value));
}

// An element of a ready buffer. `value` is null where more than a few field reads is needed to find it.
struct ReadyElement {
  NdArrayDoubleStorage* storage;
  double* value;
};

[[gnu::always_inline]] inline ReadyElement readyElement(ObjectInstance* instance, long long flat) {
  NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instance);
  const NdArrayDoubleBufferView view = readyNdArrayDoubleBuffer(storage);
  if (view.data == nullptr || !isInside(flat, view.count)) return {nullptr, nullptr};
  return {storage, view.data + flat};
}

ReadyElement readyElement1D(void* array, long long index) {
  ObjectInstance* instance = instanceOf(array);
  if (instance == nullptr || instance->metadata == nullptr) return {nullptr, nullptr};
  const NdArrayMetadata& meta = *instance->metadata;
  if (meta.ndim != 1 || !wrapsInside(index, meta.size)) return {nullptr, nullptr};
  return readyElement(instance, index);
}

ReadyElement readyElement2D(void* array, long long row, long long column) {
  ObjectInstance* instance = instanceOf(array);
  if (instance == nullptr || instance->metadata == nullptr) return {nullptr, nullptr};
  const NdArrayMetadata& meta = *instance->metadata;
  if (meta.ndim != 2 || meta.prefixValid == 0) return {nullptr, nullptr};
  if (!wrapsInside(row, meta.dim0) || !wrapsInside(column, meta.dim1)) return {nullptr, nullptr};
  return readyElement(instance, wrapAdd(wrapMultiply(row, meta.dim1), column));
}

// The whole of each accessor, for every array and every failure; out of line, so that the fast ways stay bare.
[[gnu::noinline]] double getDouble1DSlowly(void* array, long long index) {
  ObjectInstance* instance = instanceOf(array);
  if (!locate1D(array, instance, "1D indexing used on non-1D NDArray", index)) return 0.0;
  return readDouble(array, instance, index);
}

[[gnu::noinline]] double getDouble2DSlowly(void* array, long long row, long long column) {
  ObjectInstance* instance = instanceOf(array);
  long long flat = 0;
  if (!locate2D(array, instance, row, column, flat)) return 0.0;
  return readDouble(array, instance, flat);
}

[[gnu::noinline]] void setDouble1DSlowly(void* array, long long index, double value) {
  ObjectInstance* instance = instanceOf(array);
  if (!locate1D(array, instance, "1D set used on non-1D NDArray", index)) return;
  writeDouble(array, instance, index, value);
}

[[gnu::noinline]] void setDouble2DSlowly(void* array, long long row, long long column, double value) {
  ObjectInstance* instance = instanceOf(array);
  long long flat = 0;
  if (!locate2D(array, instance, row, column, flat)) return;
  writeDouble(array, instance, flat, value);
}

}  // namespace

void* getNdArrayFlat(void* array, long long index) {
  if (array == nullptr) return raiseNull(kIndexException, kOutOfBounds);
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, true, true);
  if (view.data != nullptr) {
    if (!isInside(index, view.count)) return raiseNull(kIndexException, kOutOfBounds);
    return Vesk_boxDouble(view.data[index]);
  }
  const RootSlot list(Vesk_getField_ptr(array, "_data"));
  if (list.get() == nullptr) return raiseNull(kIndexException, kOutOfBounds);
  ListData& data = *getListData(list.get());
  const ListDataLock lock(data);
  if (!isInside(index, listLogicalSize(data))) return raiseNull(kIndexException, kOutOfBounds);
  return itemAt(data, static_cast<unsigned long>(index));
}

void setNdArrayFlat(void* array, long long index, void* value) {
  if (array == nullptr) return raiseOutOfBounds();
  ObjectInstance* instance = instanceOf(array);
  NdArrayDoubleBufferView view = settledNdArrayDoubleBuffer(instance);
  if (view.data == nullptr) {
    const RootSlot valueSlot(value);
    view = ensureNdArrayDoubleBuffer(array, instance, true, true);
  }
  if (view.data == nullptr) return storeItem(array, index, value);
  if (!isInside(index, view.count)) return raiseOutOfBounds();
  double number = 0.0;
  if (!extractArrayElementDouble(value, number)) {
    return Vesk_raise(kTypeError, "NDArray<Double> expects numeric values");
  }
  storeBuffered(instance, view, index, number);
}

void readNdArrayDoubleFlat(void* array, long long flatIndex, double& out) {
  if (array == nullptr) return raiseOutOfBounds();
  NdArrayDoubleBufferView view = readyBufferOf(instanceOf(array));
  if (view.data == nullptr) view = ensureNdArrayDoubleBuffer(array, true, true);
  if (view.data != nullptr) {
    if (!isInside(flatIndex, view.count)) return raiseOutOfBounds();
    out = view.data[flatIndex];
    return;
  }
  void* item = getNdArrayFlat(array, flatIndex);
  if (item != nullptr) out = Vesk_getField_double(item, "_value");
}

void writeNdArrayDoubleFlat(void* array, long long flatIndex, double value) {
  if (array == nullptr) return raiseOutOfBounds();
  writeDouble(array, instanceOf(array), flatIndex, value);
}

double getNdArrayDouble1D(void* array, long long index) {
  const ReadyElement element = readyElement1D(array, index);
  return element.value != nullptr ? *element.value : getDouble1DSlowly(array, index);
}

double getNdArrayDouble2D(void* array, long long row, long long column) {
  const ReadyElement element = readyElement2D(array, row, column);
  return element.value != nullptr ? *element.value : getDouble2DSlowly(array, row, column);
}

void setNdArrayDouble1D(void* array, long long index, double value) {
  const ReadyElement element = readyElement1D(array, index);
  if (element.value == nullptr) return setDouble1DSlowly(array, index, value);
  storeValue(element.storage, *element.value, value);
}

void setNdArrayDouble2D(void* array, long long row, long long column, double value) {
  const ReadyElement element = readyElement2D(array, row, column);
  if (element.value == nullptr) return setDouble2DSlowly(array, row, column, value);
  storeValue(element.storage, *element.value, value);
}
