#include "construction/fastConstructors.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "ndarray/doubleBuffer.h"
#include "ndarray/numericProfile.h"
#include "ndarray/recognition.h"
#include "ndarray/shapePrefix.h"
#include "ndarray/shapes.h"
#include "ndarray/sharedShapes.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"

namespace {

constexpr const char* kNonPositiveExtent = "shape dimensions must be > 0";
constexpr const char* kNoExtents = "shape must contain at least one dimension";
constexpr const char* kTooManyElements = "NDArray element count exceeds UInt.MAX_VALUE";
constexpr const char* kNoDoubleBuffer = "cannot initialize native NDArray<Double>";
constexpr unsigned long kMaxElements = 0xFFFFFFFF;

// One dimension, in shared lists.
NdArrayMetadata describe1D(long long length, void* data) {
  void* shape = sharedShape1DArrayListObject(static_cast<unsigned long>(length));
  return {1, length, shape, sharedStride1ArrayListObject(), data, length, 0, 1};
}

// Everything but the data list. May allocate: the array and the lists are rooted or cached.
void describeInFields(void* array, const NdArrayMetadata& description) {
  Vesk_setField_i64(array, "_ndim", description.ndim);
  Vesk_setField_i64(array, "_size", description.size);
  Vesk_setField_ptr(array, "_shape", description.shape);
  Vesk_setField_ptr(array, "_strides", description.strides);
  const ObjectInstance* instance = instanceOf(array);
  if (instance != nullptr && instance->metadata != nullptr) refreshNdArrayShapePrefix(*instance->metadata);
}

// A fresh list of `count` items, each from its own call of `make`, stored at once. May allocate.
template <class Make>
void* makeListOf(unsigned long count, Make make) {
  const RootSlot list(makeRuntimeArrayListOfItems(nullptr, 0));
  ListData& data = *getListData(list.get());
  const ListDataLock lock(data);
  resetObjectItems(data, count);
  for (unsigned long i = 0; i < count; ++i) {
    void* item = make();
    data.objects.data[i] = item;
  }
  return list.get();
}

void initDoubles1D(void* array, long long length, bool zeroFill) {
  ObjectInstance* instance = getObject(array);
  *ensureNdArrayMetadata(instance) = describe1D(length, sharedEmptyArrayListObject());
  // An array that was in use before gets its zeros as well.
  NdArrayDoubleStorage* earlier = currentNdArrayDoubleStorage(instance);
  if (zeroFill && earlier != nullptr) earlier->ready = 0;
  if (ensureNdArrayDoubleBuffer(array, false, zeroFill).data == nullptr) return Vesk_raise(kTypeError, kNoDoubleBuffer);
  if (NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instance)) {
    storage->cachedSum = 0.0;
    storage->sumValid = zeroFill ? 1 : 0;
  }
}

std::string elementTypeNameOf(void* array) { return firstGenericArgShortType(runtimeTypeNameOf(array)); }

void* makeZeroList(void* array, unsigned long length) {
  const std::string typeName = elementTypeNameOf(array);
  return makeListOf(length, [&] { return zeroValueForNumericType(typeName); });
}

bool readExtents(ListData& list, std::vector<unsigned long>& extents, unsigned long& elementCount) {
  const ListDataLock lock(list);
  const unsigned long rank = listLogicalSize(list);
  if (rank == 0) return raiseFalse(kValueException, kNoExtents);
  for (unsigned long i = 0; i < rank; ++i) {
    const long long extent = shapeElement(list, i);
    if (extent <= 0) return raiseFalse(kValueException, kNonPositiveExtent);
    extents.push_back(static_cast<unsigned long>(extent));
  }
  elementCount = 1;
  for (const unsigned long extent : extents) {
    if (extent > kMaxElements || kMaxElements / extent < elementCount) {
      return raiseFalse(kValueException, kTooManyElements);
    }
    elementCount *= extent;
  }
  return true;
}

double fillAsDouble(void* fill) { return fill != nullptr ? Vesk_getField_double(fill, "_value") : 0.0; }
long long fillAsInteger(void* fill) { return fill != nullptr ? Vesk_getField_i64(fill, "_value") : 0; }

// The fill value as an element of the kind stores it: integers keep their low bits.
template <class Kind>
typename Kind::Stored fillAs(Kind, void* fill) {
  if constexpr (Kind::kIsFloating) {
    return static_cast<typename Kind::Stored>(fillAsDouble(fill));
  } else if constexpr (Kind::kIsBoolean) {
    return fillAsInteger(fill) != 0 ? 1 : 0;
  } else {
    return static_cast<typename Kind::Stored>(fillAsInteger(fill));
  }
}

// An element width that is not the kind's cannot hold its values: the list starts over in its inline storage.
void clearElements(SmallPrimitiveBuffer& elements, unsigned long width) {
  if (elements.elementSize != width) {
    elements.data = elements.inlineBytes;
    elements.elementSize = width;
    elements.capacity = SmallPrimitiveBuffer::kInlineBytes / width;
  }
  elements.size = 0;
}

void fillPackedList(ListData& list, unsigned long count, void* fill) {
  const ListDataLock lock(list);
  visitElementKind(
      list.primitiveKind,
      [&](auto kind) {
        const auto value = fillAs(kind, fill);
        clearElements(list.primitives, kind.kWidth);
        list.primitives.reserve(count);
        unsigned char* const data = list.primitives.data;
        for (unsigned long i = 0; i < count; ++i) kind.store(data + i * kind.kWidth, value);
        list.primitives.size = count;
      },
      [] {});
}

bool isPackedElementType(const std::string& name) {
  return isIntegerScalarShortType(name) || name == "Float" || name == "Double" || name == "Boolean";
}

// The data list of an array without native buffer: packed where its element type allows, else the fill object itself
// in every slot. The fill is rooted by the caller.
void* makeFilledList(void* array, unsigned long count, void* fill) {
  const std::string typeName = elementTypeNameOf(array);
  if (isPackedElementType(typeName)) {
    RootSlot list;
    void* elements =
        vesk_collections_ArrayList_newPrimitiveData(static_cast<long long>(count), typeName.c_str(), list.address());
    ListData* data = list.get() != nullptr && elements != nullptr ? getListData(list.get()) : nullptr;
    if (data != nullptr) {
      fillPackedList(*data, count, fill);
      return list.get();
    }
  }
  return makeListOf(count, [fill] { return fill; });
}

// Everything but the data list; returns the metadata, null for an array without record. May allocate: the array is
// rooted.
NdArrayMetadata* describeShape(void* array, ObjectInstance* instance, const std::vector<unsigned long>& extents,
                               unsigned long count) {
  void* shape = nullptr;
  void* strides = nullptr;
  sharedNdArrayShapeMetadata(extents, shape, strides);
  const RootSlot shapeSlot(shape);
  const RootSlot stridesSlot(strides);
  NdArrayMetadata* meta = instance != nullptr ? ensureNdArrayMetadata(instance) : nullptr;
  const auto rank = static_cast<long long>(extents.size());
  const auto dim0 = static_cast<long long>(extents[0]);
  const auto dim1 = static_cast<long long>(rank > 1 ? extents[1] : 0);
  void* data = meta != nullptr ? meta->data : nullptr;
  const NdArrayMetadata description{rank, static_cast<long long>(count), shape, strides, data, dim0, dim1, 1};
  if (meta != nullptr) *meta = description;
  if (meta == nullptr) describeInFields(array, description);
  return meta;
}

void setData(void* array, NdArrayMetadata* meta, void* data) {
  if (meta != nullptr) {
    meta->data = data;
    return;
  }
  const RootSlot root(data);
  Vesk_setField_ptr(array, "_data", data);
}

void fillDoubleBuffer(void* array, ObjectInstance* instance, unsigned long count, void* fill) {
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, false, false);
  if (view.data == nullptr) return Vesk_raise(kTypeError, kNoDoubleBuffer);
  const double value = fillAsDouble(fill);
  std::fill_n(view.data, view.count, value);
  if (NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instance)) {
    storage->cachedSum = static_cast<double>(count) * value;  // one product, not a sum
    storage->sumValid = 1;
  }
}

}  // namespace

void initNdArray1D(void* array, long long length, int zeroFill) {
  if (array == nullptr) return;
  if (length <= 0) return Vesk_raise(kValueException, kNonPositiveExtent);
  const RootSlot root(array);
  if (ndArrayUsesNativeDoubleBuffer(array)) return initDoubles1D(array, length, zeroFill != 0);
  describeInFields(array, describe1D(length, nullptr));
  void* list =
      zeroFill != 0 ? makeZeroList(array, static_cast<unsigned long>(length)) : makeRuntimeArrayListOfItems(nullptr, 0);
  const RootSlot data(list);
  Vesk_setField_ptr(array, "_data", data.get());
}

void initNdArrayFilled(void* array, void* shapeList, void* fillValue) {
  if (array == nullptr) return;
  const RootSlot arraySlot(array);
  const RootSlot shapeListSlot(shapeList);
  const RootSlot fillSlot(fillValue);
  if (shapeList == nullptr) return Vesk_raise(kValueException, kNoExtents);
  std::vector<unsigned long> extents;
  unsigned long count = 0;
  if (!readExtents(*getListData(shapeList), extents, count)) return;

  ObjectInstance* instance = getObject(array);
  NdArrayMetadata* meta = describeShape(array, instance, extents, count);
  if (ndArrayUsesNativeDoubleBuffer(array)) {
    setData(array, meta, sharedEmptyArrayListObject());
    fillDoubleBuffer(array, instance, count, fillValue);
  } else {
    setData(array, meta, makeFilledList(array, count, fillValue));
  }
}

void* makeNdArrayFromDoubles(const char* typeName, const double* values, long long count, double sum) {
  if (values == nullptr && count > 0) return nullptr;
  RootSlot array;
  double* place = nullptr;
  NdArrayDoubleStorage* storage = makeNdArrayDoubles1D(array, typeName, count, place);
  if (storage == nullptr) return nullptr;
  std::copy_n(values, count, place);
  storage->cachedSum = sum;
  storage->ready = 1;
  storage->sumValid = 1;
  return array.get();
}

NdArrayDoubleStorage* makeNdArrayDoubles1D(RootSlot& array, const char* typeName, long long count, double*& values) {
  const auto fail = [](const char* type, const char* message) {
    Vesk_raise(type, message);
    return nullptr;
  };
  if (count <= 0) return fail(kValueException, kNonPositiveExtent);
  if (typeName == nullptr) throw std::logic_error("array without a type name");
  ObjectInstance* instance = allocateInlineNdArrayDoubleObject(typeName);
  if (instance == nullptr) return fail(kTypeError, "cannot allocate native NDArray<Double>");
  array.set(instance);
  *ensureNdArrayMetadata(instance) = describe1D(count, sharedEmptyArrayListObject());
  NdArrayDoubleStorage* storage = ensureNdArrayDoubleStorage(instance);
  if (storage == nullptr) return fail(kTypeError, kNoDoubleBuffer);
  values = sizeNdArrayDoubleStorage(instance, *storage, static_cast<unsigned long>(count));
  return storage;
}
