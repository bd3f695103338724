// The native double buffer of an NDArray<Double>. Once it is ready it is the array's value store: the data list is
// read only to fill a buffer that is not, and is left behind by later writes.
#pragma once

#include <algorithm>

#include "ndarray/recognition.h"

// The values of a native buffer; `data` is null when the array has none. Valid until the array's buffer is resized.
struct NdArrayDoubleBufferView {
  double* data;
  unsigned long count;
};

// The object's ready buffer, created and filled as needed, or a null view when the object keeps no native doubles (or
// the host makes no storage for it). A buffer that is not ready is filled from the data list when `fillFromList` is
// set and the list holds numbers, else with zeros when `zeroFill` is set, else left as it is. Readers and writers of
// existing arrays pass (true, true). May allocate (the object is rooted inside); locks the data list while it reads
// it, so the caller must not hold that lock. Throws std::bad_alloc, std::system_error, std::logic_error.
NdArrayDoubleBufferView ensureNdArrayDoubleBuffer(void* object, bool fillFromList, bool zeroFill);
// For an array just made: (false, false) without looking for a buffer that is there already. May allocate: the object
// is rooted by the caller.
NdArrayDoubleBufferView makeNdArrayDoubleBuffer(void* object, ObjectInstance* instance);

// The view of a storage that is ready; a null view when it is null, not ready, or has lost its heap values.
inline NdArrayDoubleBufferView readyNdArrayDoubleBuffer(NdArrayDoubleStorage* storage) {
  if (storage == nullptr || storage->ready == 0) return {nullptr, 0};
  if (storage->heapAllocated == 0) return {storage->inlineValues, storage->count};
  if (storage->heapValues == nullptr) return {nullptr, 0};
  return {storage->heapValues, storage->count};
}

// The view of an array given with its record (null for a foreign pointer) when its metadata and storage show that it
// takes no work; null when they do not, which says nothing. Never allocates, never locks.
inline NdArrayDoubleBufferView settledNdArrayDoubleBuffer(ObjectInstance* instance) {
  constexpr NdArrayDoubleBufferView kUnsettled = {nullptr, 0};
  if (instance == nullptr || instance->metadata == nullptr) return kUnsettled;
  if (!hasElementTypeAnswer(*instance) || !elementTypeAnswer(*instance)) return kUnsettled;
  NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instance);
  if (storage == nullptr || storage->ready == 0) return kUnsettled;
  if (static_cast<long long>(storage->count) != std::max(instance->metadata->size, 0LL)) return kUnsettled;
  if (storage->count <= NdArrayDoubleStorage::kInlineCapacity) {
    return storage->heapAllocated != 0 ? kUnsettled : NdArrayDoubleBufferView{storage->inlineValues, storage->count};
  }
  const bool finalizerSettled = instance->finalizerRegistered != 0 || instance->finalizer == nullptr;
  if (storage->heapAllocated == 0 || storage->heapValues == nullptr || !finalizerSettled) return kUnsettled;
  return {storage->heapValues, storage->count};
}

// The rest of the next one, for an array that is not settled; right for one that is. May allocate (the object is rooted
// inside).
NdArrayDoubleBufferView ensureUnsettledNdArrayDoubleBuffer(void* object, ObjectInstance* instance, bool fillFromList,
                                                           bool zeroFill);
// The same as ensureNdArrayDoubleBuffer(object, fillFromList, zeroFill), for callers that hold the object's record
// (null for a foreign pointer) already.
inline NdArrayDoubleBufferView ensureNdArrayDoubleBuffer(void* object, ObjectInstance* instance, bool fillFromList,
                                                         bool zeroFill) {
  const NdArrayDoubleBufferView settled = settledNdArrayDoubleBuffer(instance);
  if (settled.data != nullptr) [[likely]]
    return settled;
  return ensureUnsettledNdArrayDoubleBuffer(object, instance, fillFromList, zeroFill);
}

// Collector memory for `count` doubles, not cleared. May allocate. Throws std::bad_alloc, also when the byte count
// does not fit in 64 bits.
double* allocateNdArrayDoubleBuffer(unsigned long count);

// Sizes the storage of an object under construction for `count` values and returns where they go: inline up to 32,
// else heap values, which are reused when they already fit. A change of place or count makes the storage not
// ready. The finalizer is registered before a heap array is allocated. May allocate: the object is rooted by the
// caller. Throws std::bad_alloc.
double* sizeNdArrayDoubleStorage(ObjectInstance* instance, NdArrayDoubleStorage& storage, unsigned long count);
