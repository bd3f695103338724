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
void passOnElementType(void* result, void* source, bool sameType, bool usualName) {
  ObjectInstance* instance = instanceOf(result);
  if (sameType) {
    copyElementTypeAnswer(instance, instanceOf(source));
  } else if (usualName && instance != nullptr && gDoubleArrayNameProved.load(std::memory_order_relaxed)) {
    setElementTypeAnswer(*instance, true);
  }
}

}  // namespace

void* createNdArrayResultLike(void* source, const std::string& typeName, unsigned long slotCount, ListData*& dataList) {
  return createNdArrayResultLike(source, typeName.c_str(), slotCount, dataList);
}

void* createNdArrayResultLike(void* source, const char* typeName, unsigned long slotCount, ListData*& dataList) {
  if (typeName == nullptr) throw std::logic_error("result array without a type name");
  RootSlot result(Vesk_allocObject(typeName));
  if (result.get() == nullptr) return nullptr;
  NdArrayMetadata& meta = *ensureNdArrayMetadata(getObject(result.get()));
  copyNdArrayDescription(meta, source);
  RootSlot list(Vesk_allocObject("ArrayList"));
  if (list.get() == nullptr) return nullptr;
  ListData& items = *getListData(list.get());
  {
    const ListDataLock lock(items);
    resetObjectItems(items, slotCount);
  }
  meta.data = list.get();
  dataList = &items;
  return result.get();
}

void copyNdArrayDescription(NdArrayMetadata& meta, void* source) {
  const ObjectInstance* instance = instanceOf(source);
  if (instance != nullptr && instance->metadata != nullptr) {
    meta = *instance->metadata;
    return;
  }
  meta.ndim = Vesk_getField_i64(source, "_ndim");
  meta.size = Vesk_getField_i64(source, "_size");
  meta.shape = Vesk_getField_ptr(source, "_shape");
  meta.strides = Vesk_getField_ptr(source, "_strides");
  refreshNdArrayShapePrefix(meta);
}

NdArrayDoubleBufferView makeNdArrayDoubleResult(RootSlot& result, void* source, const char* typeName, bool sameType,
                                                unsigned long count) {
  ListData* items = nullptr;
  result.set(createNdArrayResultLike(source, typeName, count, items));
  const bool usualName = !sameType && std::strcmp(typeName, kDoubleArrayName) == 0;
  if (result.get() != nullptr) passOnElementType(result.get(), source, sameType, usualName);
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(result.get(), false, false);
  if (view.data == nullptr) {
    Vesk_raise(kTypeError, "cannot allocate native NDArray<Double> result");
  } else if (usualName) {
    gDoubleArrayNameProved.store(true, std::memory_order_relaxed);
  }
  return view;
}

ListData& makeNdArrayListResult(RootSlot& result, void* source, const char* typeName, unsigned long count) {
  ListData* items = nullptr;
  result.set(createNdArrayResultLike(source, typeName, count, items));
  if (result.get() == nullptr) throw std::bad_alloc();
  return *items;
}
