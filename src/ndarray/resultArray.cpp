#include "ndarray/resultArray.h"

#include <atomic>
#include <cstring>
#include <new>
#include <stdexcept>

#include "ndarray/recognition.h"
#include "ndarray/shapePrefix.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"

namespace {

// The usual name of float results. Once one result has proved to be an array of doubles, all others of the name are.
constexpr const char* kDoubleArrayName = "vesk.math.NDArray<vesk.Double>";
constinit std::atomic<bool> gDoubleArrayNameProved{false};

// Spares a result the look at its type name where the answer is known already.
void passOnElementType(ObjectInstance* instance, ObjectInstance* source, bool sameType, bool usualName) {
  if (sameType) {
    copyElementTypeAnswer(instance, source);
  } else if (usualName && gDoubleArrayNameProved.load(std::memory_order_relaxed)) {
    setElementTypeAnswer(*instance, true);
  }
}

void describeLike(NdArrayMetadata& meta, void* source, const ObjectInstance* sourceInstance) {
  if (sourceInstance != nullptr && sourceInstance->metadata != nullptr) {
    meta = *sourceInstance->metadata;
    return;
  }
  meta.ndim = Vesk_getField_i64(source, "_ndim");
  meta.size = Vesk_getField_i64(source, "_size");
  meta.shape = Vesk_getField_ptr(source, "_shape");
  meta.strides = Vesk_getField_ptr(source, "_strides");
  refreshNdArrayShapePrefix(meta);
}

// Makes, in `result`, an array like the source over a list of null items, whose storage it returns; null, with the
// slot empty, when the host makes no object. The list hangs on the array from its first moment.
ListData* makeResult(RootSlot& result, void* source, const ObjectInstance* sourceInstance, const char* typeName,
                     unsigned long slotCount) {
  if (typeName == nullptr) throw std::logic_error("result array without a type name");
  result.set(Vesk_allocObject(typeName));
  if (result.get() == nullptr) return nullptr;
  NdArrayMetadata& meta = *ensureNdArrayMetadata(getObject(result.get()));
  describeLike(meta, source, sourceInstance);
  meta.data = Vesk_allocObject("ArrayList");
  if (meta.data == nullptr) {
    result.set(nullptr);
    return nullptr;
  }
  ListData& items = *getListData(meta.data);
  const ListDataLock lock(items);
  resetObjectItems(items, slotCount);
  return &items;
}

}  // namespace

void* createNdArrayResultLike(void* source, const std::string& typeName, unsigned long slotCount, ListData*& dataList) {
  return createNdArrayResultLike(source, typeName.c_str(), slotCount, dataList);
}

void* createNdArrayResultLike(void* source, const char* typeName, unsigned long slotCount, ListData*& dataList) {
  RootSlot result;
  ListData* items = makeResult(result, source, instanceOf(source), typeName, slotCount);
  if (items != nullptr) dataList = items;
  return result.get();
}

void copyNdArrayDescription(NdArrayMetadata& meta, void* source) { describeLike(meta, source, instanceOf(source)); }

NdArrayDoubleBufferView makeNdArrayDoubleResult(RootSlot& result, void* source, const char* typeName, bool sameType,
                                                unsigned long count) {
  return makeNdArrayDoubleResult(result, source, instanceOf(source), typeName, sameType, count);
}

NdArrayDoubleBufferView makeNdArrayDoubleResult(RootSlot& result, void* source, ObjectInstance* sourceInstance,
                                                const char* typeName, bool sameType, unsigned long count) {
  const bool made = makeResult(result, source, sourceInstance, typeName, count) != nullptr;
  ObjectInstance* instance = made ? getObject(result.get()) : nullptr;
  const bool usualName = !sameType && std::strcmp(typeName, kDoubleArrayName) == 0;
  if (instance != nullptr) passOnElementType(instance, sourceInstance, sameType, usualName);
  const NdArrayDoubleBufferView view = makeNdArrayDoubleBuffer(result.get(), instance);
  if (view.data == nullptr) {
    Vesk_raise(kTypeError, "cannot allocate native NDArray<Double> result");
  } else if (usualName) {
    gDoubleArrayNameProved.store(true, std::memory_order_relaxed);
  }
  return view;
}

ListData& makeNdArrayListResult(RootSlot& result, void* source, const char* typeName, unsigned long count) {
  ListData* items = makeResult(result, source, instanceOf(source), typeName, count);
  if (items == nullptr) throw std::bad_alloc();
  return *items;
}
