#include "ops/unaryPreserve.h"

#include <algorithm>

#include "kernels/unaryPreserve.h"
#include "ndarray/recognition.h"
#include "ndarray/resultArray.h"
#include "ops/listOperand.h"
#include "runtime/integerRules.h"
#include "runtime/listDataLock.h"
#include "runtime/raise.h"

namespace {

void* overBuffers(void* array, ObjectInstance* instance, NdArrayDoubleBufferView in, NdArrayUnaryPreserveOp op) {
  RootSlot result;
  const char* typeName = Vesk_objectTypeName(array);
  const NdArrayDoubleBufferView out = makeNdArrayDoubleResult(result, array, instance, typeName, true, in.count);
  if (out.data == nullptr) return nullptr;
  applyUnaryPreserve(out.data, in.data, in.count, op);
  return result.get();
}

// Integers are their own results, and the result shares their boxes.
void shareItems(ListData& out, const ListData& list) {
  std::copy_n(list.objects.data, list.objects.size, out.objects.data);
}

// A negative integer's box is replaced by a new one with its wrapping negation.
void negateNegativeItems(ListData& out, const std::string& typeName) {
  for (unsigned long i = 0; i < out.objects.size; ++i) {
    const long long value = ndArrayValueToInteger(out.objects.data[i], NdArrayNumericKind::Integer);
    if (value >= 0) continue;
    const long long negated = wrapNegate(value);
    storeBoxes(out, i, &negated, 1, typeName);
  }
}

void storeFloatings(ListData& out, const ListData& list, const std::string& typeName, NdArrayUnaryPreserveOp op) {
  forEachBlock(list.objects.size, [&](unsigned long start, unsigned long length) {
    double block[kBlockLength];
    readDoubles(block, list, start, length, NdArrayNumericKind::Floating);
    applyUnaryPreservePlain(block, block, length, op);
    storeBoxes(out, start, block, length, typeName);
    return true;
  });
}

void* overList(void* array, NdArrayUnaryPreserveOp op) {
  RootSlot data;
  RootSlot result;
  ListData* list = openDataList(data, array);
  if (list == nullptr) return nullptr;
  const ListDataLock lock(*list);
  const NdArrayNumericProfile profile = classifyItems(*list);
  const bool isInteger = profile.kind == NdArrayNumericKind::Integer;
  const NdArrayUnaryPreserveRow& row = unaryPreserveRow(op);
  if (!isInteger && profile.kind != NdArrayNumericKind::Floating) return raiseNull(kTypeError, row.notNumericMessage);

  ListData& out = makeNdArrayListResult(result, array, Vesk_objectTypeName(array), list->objects.size);
  const ListDataLock outLock(out);
  if (isInteger) {
    shareItems(out, *list);
    if (row.negatesNegativeIntegers) negateNegativeItems(out, profile.typeName);
  } else {
    storeFloatings(out, *list, profile.typeName, op);
  }
  return result.get();
}

}  // namespace

void* applyNdArrayUnaryPreserve(void* array, NdArrayUnaryPreserveOp op) {
  if (array == nullptr) return nullptr;
  const RootSlot root(array);
  ObjectInstance* instance = instanceOf(array);
  const NdArrayDoubleBufferView in = ensureNdArrayDoubleBuffer(array, instance, true, true);
  return in.data != nullptr ? overBuffers(array, instance, in, op) : overList(array, op);
}

double applyUnaryPreserveOp(NdArrayUnaryPreserveOp op, double x) {
  applyUnaryPreservePlain(&x, &x, 1, op);
  return x;
}
