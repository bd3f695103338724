#include "ndarray/doubleBuffer.h"

#include <algorithm>
#include <limits>
#include <new>

#include "ndarray/numericProfile.h"
#include "ndarray/recognition.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/rootSlot.h"

namespace {

constexpr unsigned long kInlineCapacity = NdArrayDoubleStorage::kInlineCapacity;

void markNotReady(NdArrayDoubleStorage& storage) {
  storage.ready = 0;
  storage.sumValid = 0;
}

bool heapValuesFit(const NdArrayDoubleStorage& storage, unsigned long count) {
  return storage.heapAllocated != 0 && storage.count == count && storage.heapValues != nullptr;
}

bool needsFinalizer(const ObjectInstance& instance, unsigned long count) {
  return count > kInlineCapacity && instance.finalizerRegistered == 0 && instance.finalizer != nullptr;
}

// The place for `count` values. A change of the place or the count makes the storage not ready; an allocation that
// throws leaves it as it was.
double* placeValues(NdArrayDoubleStorage& storage, unsigned long count) {
  if (count > kInlineCapacity) {
    if (heapValuesFit(storage, count)) return storage.heapValues;
    storage.heapValues = allocateNdArrayDoubleBuffer(count);
    storage.heapAllocated = 1;
    markNotReady(storage);
  } else if (storage.heapAllocated != 0) {
    storage.heapValues = nullptr;
    storage.heapAllocated = 0;
    markNotReady(storage);
  }
  if (storage.count != count) {  // a ready buffer that stays as it is may be read by other threads: nothing is written
    markNotReady(storage);
    storage.count = count;
  }
  return count > kInlineCapacity ? storage.heapValues : storage.inlineValues;
}

// Stores `read(0)`, `read(1)`, ... and returns their sum, added up in this order from 0.0: the order is the result.
template <class Read>
double fillWith(double* values, unsigned long count, Read read) {
  double sum = 0.0;
  for (unsigned long i = 0; i < count; ++i) {
    const double value = read(i);
    values[i] = value;
    sum += value;
  }
  return sum;
}

double fillFromPacked(double* values, const SmallPrimitiveBuffer& elements, unsigned char code, unsigned long count) {
  const auto zero = [](unsigned long) { return 0.0; };
  return visitElementKind(
      code,
      [&](auto kind) {
        const unsigned char* data = elements.data;
        const unsigned long stride = elements.elementSize;
        if (stride < kind.kWidth) return fillWith(values, count, zero);
        return fillWith(values, count, [=](unsigned long i) { return kind.toDouble(kind.load(data + i * stride)); });
      },
      [&] { return fillWith(values, count, zero); });
}

// Fills from the data list, the rest with zeros. False, with nothing changed, when there is no list or no numbers in
// it. Nothing here allocates, so the list needs no slot.
bool fillFromDataList(void* object, NdArrayDoubleStorage& storage, double* values) {
  void* data = Vesk_getField_ptr(object, "_data");
  if (data == nullptr) return false;
  ListData& list = *getListData(data);
  const ListDataLock lock(list);
  const unsigned long length = listLogicalSize(list);
  if (length == 0) return false;
  const NdArrayNumericKind kind = detectNdArrayNumericProfile(list).kind;
  if (kind == NdArrayNumericKind::None) return false;
  const unsigned long count = std::min(length, storage.count);
  void** const items = list.objects.data;
  const double sum =
      list.primitiveKind != kObjectListKind
          ? fillFromPacked(values, list.primitives, list.primitiveKind, count)
          : fillWith(values, count, [=](unsigned long i) { return ndArrayValueToDouble(items[i], kind); });
  std::fill(values + count, values + storage.count, 0.0);
  storage.cachedSum = sum;
  storage.ready = 1;
  storage.sumValid = 1;
  return true;
}

unsigned long elementCountOf(void* object, const ObjectInstance& instance) {
  const long long size = instance.metadata != nullptr ? instance.metadata->size : Vesk_getField_i64(object, "_size");
  return size > 0 ? static_cast<unsigned long>(size) : 0;
}

// Sizes the storage and fills it where it has no values yet. May allocate: the object is rooted by the caller.
[[gnu::always_inline]] inline NdArrayDoubleBufferView makeReady(void* object, ObjectInstance& instance,
                                                                bool fillFromList, bool zeroFill) {
  NdArrayDoubleStorage* storage = ensureNdArrayDoubleStorage(&instance);
  if (storage == nullptr) return {nullptr, 0};
  const unsigned long count = elementCountOf(object, instance);
  if (needsFinalizer(instance, count)) ensureObjectFinalizerRegistered(&instance);
  double* values = placeValues(*storage, count);
  if (storage->ready != 0 || (fillFromList && fillFromDataList(object, *storage, values))) return {values, count};
  if (zeroFill) {
    std::fill_n(values, count, 0.0);
    storage->cachedSum = 0.0;
  }
  storage->sumValid = zeroFill ? 1 : 0;
  storage->ready = 1;
  return {values, count};
}

}  // namespace

NdArrayDoubleBufferView ensureNdArrayDoubleBuffer(void* object, bool fillFromList, bool zeroFill) {
  return ensureNdArrayDoubleBuffer(object, instanceOf(object), fillFromList, zeroFill);
}

NdArrayDoubleBufferView ensureUnsettledNdArrayDoubleBuffer(void* object, ObjectInstance* instance, bool fillFromList,
                                                           bool zeroFill) {
  if (!ndArrayUsesNativeDoubleBuffer(object, instance)) return {nullptr, 0};
  const RootSlot root(object);
  return makeReady(object, *instance, fillFromList, zeroFill);
}

NdArrayDoubleBufferView makeNdArrayDoubleBuffer(void* object, ObjectInstance* instance) {
  if (!ndArrayUsesNativeDoubleBuffer(object, instance)) return {nullptr, 0};
  return makeReady(object, *instance, false, false);
}

double* allocateNdArrayDoubleBuffer(unsigned long count) {
  if (count > std::numeric_limits<unsigned long>::max() / sizeof(double)) throw std::bad_alloc();
  void* memory = Vesk_gcAllocAtomic(count * sizeof(double));
  if (memory == nullptr) throw std::bad_alloc();
  return static_cast<double*>(memory);
}

double* sizeNdArrayDoubleStorage(ObjectInstance* instance, NdArrayDoubleStorage& storage, unsigned long count) {
  if (count > kInlineCapacity && !heapValuesFit(storage, count)) ensureObjectFinalizerRegistered(instance);
  return placeValues(storage, count);
}
