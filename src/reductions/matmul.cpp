#include "reductions/matmul.h"

#include <limits>
#include <vector>

#include "kernels/matrixProduct.h"
#include "ndarray/doubleBuffer.h"
#include "ndarray/recognition.h"
#include "ndarray/shapePrefix.h"
#include "ndarray/shapes.h"
#include "ndarray/sharedShapes.h"
#include "runtime/raise.h"
#include "runtime/rootSlot.h"

namespace {

constexpr unsigned long kMaxCount = std::numeric_limits<unsigned int>::max();
constexpr const char* kNotTwoDimensional = "matrix multiplication requires 2D arrays";
constexpr const char* kShapeMismatch = "matrix multiplication shape mismatch";
constexpr const char* kTooMany = "NDArray element count exceeds UInt.MAX_VALUE";

bool checkExtent(unsigned long extent) {
  if (extent == 0) return raiseFalse(kValueException, "shape dimensions must be > 0");
  if (extent > kMaxCount) return raiseFalse(kValueException, kTooMany);
  return true;
}

// Sets the product's shape, or raises. May allocate native memory only.
bool productShape(void* lhs, void* rhs, MatrixProductShape& shape) {
  const std::vector<unsigned long> lhsShape = snapshotNdArrayShape(lhs);
  const std::vector<unsigned long> rhsShape = snapshotNdArrayShape(rhs);
  if (lhsShape.size() != 2 || rhsShape.size() != 2) return raiseFalse(kValueException, kNotTwoDimensional);
  shape = {lhsShape[0], lhsShape[1], rhsShape[1]};
  if (rhsShape[0] != shape.inner) return raiseFalse(kValueException, kShapeMismatch);
  if (!checkExtent(shape.rows) || !checkExtent(shape.columns)) return false;
  if (kMaxCount / shape.columns < shape.rows) return raiseFalse(kValueException, kTooMany);
  return true;
}

// Whether a buffer holds exactly the elements of an array of these extents.
bool holds(NdArrayDoubleBufferView view, unsigned long rows, unsigned long columns) {
  unsigned long count = 0;
  return !__builtin_mul_overflow(rows, columns, &count) && view.count == count;
}

// Writes the fields of the new array. May allocate: the result is rooted by the caller.
void describeProduct(void* result, const std::vector<unsigned long>& extents) {
  const unsigned long count = extents[0] * extents[1];
  Vesk_setField_i64(result, "_ndim", 2);
  Vesk_setField_i64(result, "_size", static_cast<long long>(count));
  const RootSlot shape(makeRuntimeUIntArrayList(extents));
  Vesk_setField_ptr(result, "_shape", shape.get());
  const RootSlot strides(makeRuntimeUIntArrayList(rowMajorStridesForShape(extents)));
  Vesk_setField_ptr(result, "_strides", strides.get());
  Vesk_setField_ptr(result, "_data", sharedEmptyArrayListObject());
  ObjectInstance* instance = getObject(result);
  if (instance != nullptr && instance->metadata != nullptr) refreshNdArrayShapePrefix(*instance->metadata);
}

// The cached sum of a product is the plain sum of its elements in row-major order.
void cacheSequentialSum(void* array, NdArrayDoubleBufferView view) {
  NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(getObject(array));
  if (storage == nullptr) return;
  double total = 0.0;
  for (unsigned long i = 0; i < view.count; ++i) total = total + view.data[i];
  storage->cachedSum = total;
  storage->sumValid = 1;
}

}  // namespace

void* multiplyNdArrays(void* lhs, void* rhs) {
  if (lhs == nullptr) return nullptr;
  if (!isRuntimeNdArrayObject(rhs)) return raiseNull(kTypeError, "matrix multiplication expects a NDArray operand");
  const RootSlot lhsSlot(lhs);
  const RootSlot rhsSlot(rhs);
  if (Vesk_getField_i64(lhs, "_ndim") != 2 || Vesk_getField_i64(rhs, "_ndim") != 2) {
    return raiseNull(kValueException, kNotTwoDimensional);
  }
  const NdArrayDoubleBufferView lhsView = ensureNdArrayDoubleBuffer(lhs, true, true);
  const NdArrayDoubleBufferView rhsView = ensureNdArrayDoubleBuffer(rhs, true, true);
  if (lhsView.data == nullptr || rhsView.data == nullptr) {
    return raiseNull(kTypeError, "matrix multiplication native path expects NDArray<Double>");
  }
  MatrixProductShape shape{};
  if (!productShape(lhs, rhs, shape)) return nullptr;
  // The shapes are the language's to write; buffers that disagree with them must not be read by them.
  if (!holds(lhsView, shape.rows, shape.inner) || !holds(rhsView, shape.inner, shape.columns)) {
    return raiseNull(kValueException, kShapeMismatch);
  }

  const RootSlot result(Vesk_allocObject(runtimeTypeNameOf(lhs).c_str()));
  if (result.get() == nullptr) return raiseNull(kTypeError, "cannot allocate native NDArray<Double> result");
  copyElementTypeAnswer(getObject(result.get()), instanceOf(lhs));  // they have one type name
  describeProduct(result.get(), {shape.rows, shape.columns});
  const NdArrayDoubleBufferView out = ensureNdArrayDoubleBuffer(result.get(), false, false);
  if (out.data == nullptr || out.count != shape.rows * shape.columns) {
    return raiseNull(kTypeError, "cannot initialize native NDArray<Double> result");
  }
  multiplyMatrices(out.data, lhsView.data, rhsView.data, shape);
  cacheSequentialSum(result.get(), out);
  return result.get();
}
