#include "ops/binaryFloat.h"

#include <cmath>

#include "kernels/elementLoops.h"
#include "kernels/operationRows.h"
#include "ndarray/recognition.h"
#include "ndarray/resultArray.h"
#include "ndarray/shapes.h"
#include "ops/listOperand.h"
#include "ops/resultTypeName.h"
#include "runtime/listDataLock.h"
#include "runtime/raise.h"

namespace {

// out[i] = Function(lhs[i], rhs) for one number on the right.
using NumberLoop = void(double* out, const double* lhs, double rhs, unsigned long length);

template <double (*Function)(double, double)>
void numberLoop(double* out, const double* lhs, double rhs, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) out[i] = Function(lhs[i], rhs);
}

struct Row {
  NdArrayBinaryFloatOp op;
  NdArrayBinaryLoop* withValues;
  NumberLoop* withNumber;
  const char* notNumericMessage;
  const char* noOperandMessage;
};

template <double (*Function)(double, double)>
constexpr Row rowFor(NdArrayBinaryFloatOp op, const char* notNumeric, const char* noOperand) {
  return {op, binaryLoopPlain<Function>, numberLoop<Function>, notNumeric, noOperand};
}

constexpr Row kRows[] = {
    rowFor<::atan2>(NdArrayBinaryFloatOp::Atan2, "atan2 expects numeric values",
                    "atan2 expects a numeric scalar or NDArray"),
    rowFor<::pow>(NdArrayBinaryFloatOp::Pow, "pow expects numeric values", "pow expects a numeric scalar or NDArray"),
    rowFor<::hypot>(NdArrayBinaryFloatOp::Hypot, "hypot expects numeric values",
                    "hypot expects a numeric scalar or NDArray"),
    rowFor<::fmod>(NdArrayBinaryFloatOp::Fmod, "fmod expects numeric values",
                   "fmod expects a numeric scalar or NDArray"),
};
static_assert(rowsFollowTheirCodes(kRows));

bool readNumber(double& number, void* other, const Row& row) {
  return extractArrayElementDouble(other, number) || raiseFalse(kTypeError, row.noOperandMessage);
}

// The result is made before `other` is looked at.
void* overBuffers(void* receiver, void* other, NdArrayDoubleBufferView in, const Row& row) {
  RootSlot result;
  const NdArrayDoubleResultTypeName typeName(receiver);
  const NdArrayDoubleBufferView out = makeNdArrayDoubleResult(result, receiver, typeName.c_str(), false, in.count);
  if (out.data == nullptr) return nullptr;
  ObjectInstance* otherInstance = instanceOf(other);
  if (isRuntimeNdArrayObject(other, otherInstance)) {
    if (!shapeEqualsNdArray(receiver, other)) return raiseNull(kValueException, kShapeMismatch);
    const double* values = secondOperandValues(other, otherInstance, in.count, out.data, row.notNumericMessage);
    if (values == nullptr) return nullptr;
    row.withValues(out.data, in.data, values, in.count);
  } else {
    double number = 0.0;
    if (!readNumber(number, other, row)) return nullptr;
    row.withNumber(out.data, in.data, number, in.count);
  }
  return result.get();
}

// The second operand of the list way: the items of a list, or one number when there is none.
struct SecondOperand {
  ListData* list;
  NdArrayNumericKind kind;
  double number;
};

// Checks an array `other` against the receiver and classifies its items; `second.list` is null when it has no list.
bool openSecondArray(SecondOperand& second, void* receiver, void* other, unsigned long count, const Row& row) {
  if (!shapeEqualsNdArray(receiver, other)) return raiseFalse(kValueException, kShapeMismatch);
  if (second.list == nullptr) return raiseFalse(kTypeError, kInvalidInstance);
  second.kind = classifyItems(*second.list).kind;
  if (second.kind == NdArrayNumericKind::None) return raiseFalse(kTypeError, row.notNumericMessage);
  return second.list->objects.size == count || raiseFalse(kValueException, kShapeMismatch);
}

void storeResults(ListData& out, const ListData& list, NdArrayNumericKind kind, const SecondOperand& second,
                  const Row& row) {
  forEachBlock(out.objects.size, [&](unsigned long start, unsigned long length) {
    double x[kBlockLength];
    readDoubles(x, list, start, length, kind);
    if (second.list != nullptr) {
      double y[kBlockLength];
      readDoubles(y, *second.list, start, length, second.kind);
      row.withValues(x, x, y, length);
    } else {
      row.withNumber(x, x, second.number, length);
    }
    storeDoubleBoxes(out, start, x, length);
    return true;
  });
}

// Both operand lists are locked together at the start, so that two calls with exchanged operands cannot wait for each
// other; what is wrong with `other` is still raised only after the result was made.
void* overLists(void* receiver, void* other, const Row& row) {
  RootSlot data;
  RootSlot otherData;
  RootSlot result;
  ListData* list = openDataList(data, receiver);
  if (list == nullptr) return nullptr;
  const bool otherIsArray = isRuntimeNdArrayObject(other);
  if (otherIsArray) otherData.set(Vesk_getField_ptr(other, "_data"));
  SecondOperand second{otherData.get() != nullptr ? getListData(otherData.get()) : nullptr, {}, 0.0};
  const TwoListDataLock lock(*list, second.list);
  const NdArrayNumericKind kind = classifyItems(*list).kind;
  if (kind == NdArrayNumericKind::None) return raiseNull(kTypeError, row.notNumericMessage);

  const unsigned long count = list->objects.size;
  const NdArrayDoubleResultTypeName typeName(receiver);
  ListData& out = makeNdArrayListResult(result, receiver, typeName.c_str(), count);
  const ListDataLock outLock(out);
  const bool opened =
      otherIsArray ? openSecondArray(second, receiver, other, count, row) : readNumber(second.number, other, row);
  if (!opened) return nullptr;
  storeResults(out, *list, kind, second, row);
  return result.get();
}

}  // namespace

void* applyNdArrayBinaryFloat(void* receiver, void* other, NdArrayBinaryFloatOp op) {
  if (receiver == nullptr) return nullptr;
  const RootSlot root(receiver);
  const RootSlot otherRoot(other);
  const Row& row = rowOf(kRows, op);
  const NdArrayDoubleBufferView in = ensureNdArrayDoubleBuffer(receiver, true, true);
  return in.data != nullptr ? overBuffers(receiver, other, in, row) : overLists(receiver, other, row);
}

double applyBinaryFloatOp(NdArrayBinaryFloatOp op, double x, double y) {
  rowOf(kRows, op).withNumber(&x, &x, y, 1);
  return x;
}
