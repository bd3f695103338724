#include "ops/unaryFloat.h"

#include "kernels/unaryFloat.h"
#include "ndarray/recognition.h"
#include "ndarray/resultArray.h"
#include "ops/listOperand.h"
#include "ops/resultTypeName.h"
#include "runtime/listDataLock.h"
#include "runtime/raise.h"

namespace {

// False after raising for a value outside the function's domain.
bool checkDomain(const NdArrayUnaryFloatRow& row, const double* values, unsigned long length) {
  if (row.anyOutside == nullptr || !row.anyOutside(values, length)) return true;
  return raiseFalse(kValueException, row.outsideMessage);
}

void* overBuffers(void* operand, ObjectInstance* instance, NdArrayDoubleBufferView in, NdArrayUnaryFloatOp op) {
  RootSlot result;
  const NdArrayDoubleResultTypeName typeName(operand);
  const NdArrayDoubleBufferView out =
      makeNdArrayDoubleResult(result, operand, instance, typeName.c_str(), false, in.count);
  if (out.data == nullptr || !checkDomain(unaryFloatRow(op), in.data, in.count)) return nullptr;
  applyUnaryFloat(out.data, in.data, in.count, op);
  return result.get();
}

// The list way never takes the AVX2 kernel: its angle conversions round differently.
void* overList(void* operand, NdArrayUnaryFloatOp op) {
  RootSlot data;
  RootSlot result;
  ListData* list = openDataList(data, operand);
  if (list == nullptr) return nullptr;
  const ListDataLock lock(*list);
  const NdArrayNumericKind kind = classifyItems(*list).kind;
  const NdArrayUnaryFloatRow& row = unaryFloatRow(op);
  if (kind == NdArrayNumericKind::None) return raiseNull(kTypeError, row.notNumericMessage);

  const unsigned long count = list->objects.size;
  const NdArrayDoubleResultTypeName typeName(operand);
  ListData& out = makeNdArrayListResult(result, operand, typeName.c_str(), count);
  const ListDataLock outLock(out);
  const bool complete = forEachBlock(count, [&](unsigned long start, unsigned long length) {
    double block[kBlockLength];
    readDoubles(block, *list, start, length, kind);
    if (!checkDomain(row, block, length)) return false;
    row.plain(block, block, length);
    storeDoubleBoxes(out, start, block, length);
    return true;
  });
  return complete ? result.get() : nullptr;
}

}  // namespace

void* applyNdArrayUnaryFloat(void* operand, NdArrayUnaryFloatOp op) {
  if (operand == nullptr) return nullptr;
  const RootSlot array(operand);
  ObjectInstance* instance = instanceOf(operand);
  const NdArrayDoubleBufferView in = ensureNdArrayDoubleBuffer(operand, instance, true, true);
  return in.data != nullptr ? overBuffers(operand, instance, in, op) : overList(operand, op);
}

double applyUnaryFloatOp(NdArrayUnaryFloatOp op, double x) {
  applyUnaryFloatPlain(&x, &x, 1, op);
  return x;
}
