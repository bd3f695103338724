#include "ndarray/shapes.h"

#include <optional>

#include "ndarray/recognition.h"
#include "ndarray/shapePrefix.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"

namespace {

constexpr const char* kNotTwoDimensional = "2D indexing used on non-2D NDArray";
constexpr const char* kInvalidShape = "Invalid NDArray shape";

bool extentsFromMetadata(NdArrayMetadata& meta, long long& rows, long long& cols) {
  if (meta.ndim != 2) return raiseFalse(kValueException, kNotTwoDimensional);
  if (meta.prefixValid == 0) refreshNdArrayShapePrefix(meta);
  if (meta.prefixValid == 0) return raiseFalse(kValueException, kInvalidShape);
  rows = meta.dim0;
  cols = meta.dim1;
  return true;
}

bool extentsFromFields(void* array, long long& rows, long long& cols) {
  if (Vesk_getField_i64(array, "_ndim") != 2) return raiseFalse(kValueException, kNotTwoDimensional);
  void* shape = Vesk_getField_ptr(array, "_shape");
  if (shape == nullptr) return raiseFalse(kValueException, kInvalidShape);
  ListData& list = *getListData(shape);
  const ListDataLock lock(list);
  if (listLogicalSize(list) < 2) return raiseFalse(kValueException, kInvalidShape);
  rows = shapeElement(list, 0);
  cols = shapeElement(list, 1);
  return true;
}

// The answer as far as the metadata alone settles it.
std::optional<bool> equalByMetadata(const NdArrayMetadata& a, const NdArrayMetadata& b) {
  if (a.ndim != b.ndim || a.size != b.size) return false;
  if (a.shape != nullptr && a.shape == b.shape) return true;
  if (a.prefixValid != 0 && b.prefixValid != 0 && a.ndim <= 2) return a.dim0 == b.dim0 && a.dim1 == b.dim1;
  return std::nullopt;
}

// An extent as the comparison reads it: a box of any class answers by its value, nothing else is asked for one.
long long comparedExtent(const ListData& list, unsigned long index) {
  if (list.primitiveKind != kObjectListKind) return shapeElement(list, index);
  void* item = list.objects.data[index];
  return item != nullptr && hasObjectMagic(item) ? Vesk_getField_i64(item, "_value") : 0;
}

bool listsHoldEqualExtents(ListData& a, ListData& b) {
  const TwoListDataLock locks(a, &b);
  const unsigned long count = listLogicalSize(a);
  if (count != listLogicalSize(b)) return false;
  for (unsigned long i = 0; i < count; ++i) {
    if (comparedExtent(a, i) != comparedExtent(b, i)) return false;
  }
  return true;
}

}  // namespace

long long shapeElement(const ListData& list, unsigned long index) {
  if (list.primitiveKind != kObjectListKind && index < list.primitives.size) {
    return primitiveListReadI64Runtime(list, index);
  }
  long long value = 0;
  if (index < list.objects.size) extractArrayElementInteger(list.objects.data[index], value);
  return value;
}

std::vector<unsigned long> snapshotNdArrayShape(void* array) {
  std::vector<unsigned long> extents;
  void* shape = Vesk_getField_ptr(array, "_shape");
  if (shape == nullptr) return extents;
  ListData& list = *getListData(shape);
  const ListDataLock lock(list);
  const unsigned long count = listLogicalSize(list);
  extents.reserve(count);
  for (unsigned long i = 0; i < count; ++i) extents.push_back(static_cast<unsigned long>(shapeElement(list, i)));
  return extents;
}

bool snapshotNdArray2DShapeFast(void* array, long long& rows, long long& cols) {
  return snapshotNdArray2DShapeFast(array, instanceOf(array), rows, cols);
}

bool snapshotNdArray2DShapeFast(void* array, ObjectInstance* instance, long long& rows, long long& cols) {
  if (instance != nullptr && instance->metadata != nullptr) {
    return extentsFromMetadata(*instance->metadata, rows, cols);
  }
  return extentsFromFields(array, rows, cols);
}

bool shapeEqualsNdArray(void* a, void* b) { return shapeEqualsNdArray(a, instanceOf(a), b, instanceOf(b)); }

bool shapeEqualsNdArray(void* a, const ObjectInstance* instanceA, void* b, const ObjectInstance* instanceB) {
  const NdArrayMetadata* metaA = instanceA != nullptr ? instanceA->metadata : nullptr;
  const NdArrayMetadata* metaB = instanceB != nullptr ? instanceB->metadata : nullptr;
  if (metaA != nullptr && metaB != nullptr) {
    if (const std::optional<bool> equal = equalByMetadata(*metaA, *metaB)) return *equal;
  }
  if (Vesk_getField_i64(a, "_ndim") != Vesk_getField_i64(b, "_ndim")) return false;
  void* shapeA = Vesk_getField_ptr(a, "_shape");
  void* shapeB = Vesk_getField_ptr(b, "_shape");
  if (shapeA == nullptr || shapeB == nullptr) return false;
  return shapeA == shapeB || listsHoldEqualExtents(*getListData(shapeA), *getListData(shapeB));
}

std::vector<unsigned long> rowMajorStridesForShape(const std::vector<unsigned long>& extents) {
  std::vector<unsigned long> strides(extents.size(), 1);
  unsigned long product = 1;
  for (unsigned long i = extents.size(); i-- > 0;) {
    strides[i] = product;
    product *= extents[i];
  }
  return strides;
}
