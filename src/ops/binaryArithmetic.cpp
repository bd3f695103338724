#include "ops/binaryArithmetic.h"

#include <type_traits>

#include "kernels/binaryArithmetic.h"
#include "kernels/operationRows.h"
#include "ndarray/recognition.h"
#include "ndarray/resultArray.h"
#include "ndarray/shapes.h"
#include "ops/listOperand.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"

namespace {

constexpr const char* kNotNumeric = "NDArray arithmetic expects numeric values";

// out[i] = Function(lhs[i], rhs[i]).
using IntegerLoop = void(long long* out, const long long* lhs, const long long* rhs, unsigned long length);

template <long long (*Function)(long long, long long)>
void integerLoop(long long* out, const long long* lhs, const long long* rhs, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) out[i] = Function(lhs[i], rhs[i]);
}

// What an operation has beyond its loops over doubles.
struct Row {
  NdArrayBinaryArithmeticOp op;
  IntegerLoop* integers;
  bool refusesZero;  // as the right integer
  const char* notAnArrayMessage;
};

constexpr Row kRows[] = {
    {NdArrayBinaryArithmeticOp::Add, integerLoop<wrapAdd>, false, "+ expects a NDArray operand"},
    {NdArrayBinaryArithmeticOp::Subtract, integerLoop<wrapSubtract>, false, "- expects a NDArray operand"},
    {NdArrayBinaryArithmeticOp::Multiply, integerLoop<wrapMultiply>, false, "* expects a NDArray operand"},
    {NdArrayBinaryArithmeticOp::Divide, integerLoop<truncatingDivide>, true, "/ expects a NDArray operand"},
};
static_assert(rowsFollowTheirCodes(kRows));

// Two operand lists of the same element count, and how to read them.
struct Operands {
  const ListData& left;
  const ListData& right;
  NdArrayNumericKind leftKind;
  NdArrayNumericKind rightKind;

  bool areNumeric() const { return leftKind != NdArrayNumericKind::None && rightKind != NdArrayNumericKind::None; }
  bool areFloating() const {
    return leftKind == NdArrayNumericKind::Floating || rightKind == NdArrayNumericKind::Floating;
  }
};

// Hands the results to `store(start, values, length)` block by block: doubles when either operand is floating, else
// wrapping 64-bit integers. False after raising for a zero divisor among integers.
template <class Store>
bool computeBlocks(const Operands& in, unsigned long count, NdArrayBinaryArithmeticOp op, Store store) {
  if (in.areFloating()) {
    return forEachBlock(count, [&](unsigned long start, unsigned long length) {
      double x[kBlockLength];
      double y[kBlockLength];
      readDoubles(x, in.left, start, length, in.leftKind);
      readDoubles(y, in.right, start, length, in.rightKind);
      applyBinaryArithmetic(x, x, y, length, op);
      store(start, x, length);
      return true;
    });
  }
  const Row& row = rowOf(kRows, op);
  return forEachBlock(count, [&](unsigned long start, unsigned long length) {
    long long x[kBlockLength];
    long long y[kBlockLength];
    readIntegers(x, in.left, start, length, in.leftKind);
    readIntegers(y, in.right, start, length, in.rightKind);
    if (row.refusesZero && std::find(y, y + length, 0) != y + length) {
      return raiseFalse(kZeroDivisionException, "division by zero");
    }
    row.integers(x, x, y, length);
    store(start, x, length);
    return true;
  });
}

// An operand and its record.
struct Array {
  void* object;
  ObjectInstance* instance;

  explicit Array(void* array) : object(array), instance(instanceOf(array)) {}
};

void* overBuffers(const Array& lhs, const Array& rhs, NdArrayDoubleBufferView in, NdArrayBinaryArithmeticOp op) {
  RootSlot result;
  const char* typeName = Vesk_objectTypeName(lhs.object);
  const NdArrayDoubleBufferView out =
      makeNdArrayDoubleResult(result, lhs.object, lhs.instance, typeName, true, in.count);
  if (out.data == nullptr) return nullptr;
  const double* values = secondOperandValues(rhs.object, rhs.instance, in.count, out.data, kNotNumeric);
  if (values == nullptr) return nullptr;
  applyBinaryArithmetic(out.data, in.data, values, in.count, op);
  return result.get();
}

// Whether `count` numbers can be stored into the packed list. The host chose its kind from a name, so it is looked at
// before anything is written.
bool takesPackedNumbers(ListData& list, unsigned long count) {
  const ListDataLock lock(list);
  const auto wideEnough = [&](auto kind) { return !kind.kIsBoolean && list.primitives.elementSize >= kind.kWidth; };
  return list.primitives.size >= count && visitElementKind(list.primitiveKind, wideEnough, [] { return false; });
}

// Stores values into a packed list: rounded once into a floating element, truncated toward zero and cut to its low
// bits into an integer one. The kind is the list's own.
template <class Value>
void storePacked(ListData& out, unsigned long start, const Value* values, unsigned long length) {
  unsigned char* const first = primitiveElementAt(out, start);
  const auto storeAll = [&](auto kind) {
    using Stored = typename decltype(kind)::Stored;
    withElementStride(kind, out.primitives.elementSize, [&](auto stride) {
      for (unsigned long i = 0; i < length; ++i) {
        unsigned char* const element = first + i * stride;
        if constexpr (std::is_integral_v<Stored> && std::is_same_v<Value, double>) {
          kind.store(element, static_cast<Stored>(doubleToInteger(values[i])));
        } else if constexpr (std::is_integral_v<Stored>) {
          kind.store(element, static_cast<Stored>(values[i]));
        } else {
          kind.store(element, static_cast<Stored>(static_cast<double>(values[i])));  // to float by way of double
        }
      }
    });
  };
  visitElementKind(out.primitiveKind, storeAll, [] {});
}

// Makes, in `result`, an array like `lhs` over a new packed list of `count` elements of the named type. Null after
// raising when the host makes no list that takes them.
ListData* makePackedResult(RootSlot& result, void* lhs, const std::string& elementTypeName, unsigned long count) {
  result.set(Vesk_allocObject(runtimeTypeNameOf(lhs).c_str()));
  if (result.get() == nullptr) throw std::bad_alloc();
  NdArrayMetadata& meta = *ensureNdArrayMetadata(getObject(result.get()));
  copyNdArrayDescription(meta, lhs);
  RootSlot list;
  const void* elements = vesk_collections_ArrayList_newPrimitiveData(static_cast<long long>(count),
                                                                     elementTypeName.c_str(), list.address());
  ListData* out = list.get() != nullptr ? getListData(list.get()) : nullptr;
  if (out == nullptr || (elements == nullptr && count != 0) || !takesPackedNumbers(*out, count)) {
    Vesk_raise(kTypeError, "cannot initialize primitive NDArray result");
    return nullptr;
  }
  meta.data = list.get();
  return out;
}

void* overPackedLists(RootSlot& result, void* lhs, const ListData& left, const ListData& right,
                      NdArrayBinaryArithmeticOp op) {
  const unsigned long count = left.primitives.size;
  if (right.primitives.size != count) return raiseNull(kValueException, kShapeMismatch);
  const NdArrayNumericProfile profile = detectNdArrayNumericProfile(left);
  const Operands in{left, right, profile.kind, detectNdArrayNumericProfile(right).kind};
  if (!in.areNumeric()) return raiseNull(kTypeError, kNotNumeric);
  ListData* out = makePackedResult(result, lhs, profile.typeName, count);
  if (out == nullptr) return nullptr;
  const ListDataLock outLock(*out);
  const auto store = [&](unsigned long start, const auto* values, unsigned long length) {
    storePacked(*out, start, values, length);
  };
  return computeBlocks(in, count, op, store) ? result.get() : nullptr;
}

// Whether every item of both lists is one shared box; one computation and one box then serve the whole result.
bool haveSharedItems(const ListData& left, const ListData& right) {
  void* item = nullptr;
  return listItemsShareSinglePointer(left.objects, item) && listItemsShareSinglePointer(right.objects, item);
}

void* overItems(RootSlot& result, void* lhs, ListData& left, ListData& right, NdArrayBinaryArithmeticOp op) {
  materializePrimitiveI64ListRuntime(left);
  materializePrimitiveI64ListRuntime(right);
  const unsigned long count = left.objects.size;
  if (right.objects.size != count) return raiseNull(kValueException, kShapeMismatch);
  const NdArrayNumericProfile profile = detectNdArrayNumericProfile(left);
  const Operands in{left, right, profile.kind, detectNdArrayNumericProfile(right).kind};
  if (!in.areNumeric()) return raiseNull(kTypeError, kNotNumeric);
  ListData& out = makeNdArrayListResult(result, lhs, Vesk_objectTypeName(lhs), count);
  const ListDataLock outLock(out);
  const unsigned long distinct = haveSharedItems(left, right) ? 1 : count;
  const auto store = [&](unsigned long start, const auto* values, unsigned long length) {
    storeBoxes(out, start, values, length, profile.typeName);
  };
  if (!computeBlocks(in, distinct, op, store)) return nullptr;
  if (distinct != count) std::fill_n(out.objects.data, count, out.objects.data[0]);
  return result.get();
}

// A right operand that keeps its values in a native buffer is read from its list all the same, which may be empty or
// full of nulls: only the left operand decides the way.
void* overLists(void* lhs, void* rhs, NdArrayBinaryArithmeticOp op) {
  RootSlot leftData;
  RootSlot rightData;
  RootSlot result;
  ListData* left = openDataList(leftData, lhs);
  if (left == nullptr) return nullptr;
  ListData* right = openDataList(rightData, rhs);
  if (right == nullptr) return nullptr;
  const TwoListDataLock lock(*left, right);
  const auto isPacked = [](const ListData& list) {
    return list.primitiveKind != kObjectListKind && list.primitiveKind != kBooleanKind;
  };
  if (isPacked(*left) && isPacked(*right)) return overPackedLists(result, lhs, *left, *right, op);
  return overItems(result, lhs, *left, *right, op);
}

}  // namespace

void* applyNdArrayBinaryArithmetic(void* lhs, void* rhs, NdArrayBinaryArithmeticOp op) {
  if (lhs == nullptr) return nullptr;
  const RootSlot leftSlot(lhs);
  const RootSlot rightSlot(rhs);
  const Array left(lhs);
  const Array right(rhs);
  if (!isRuntimeNdArrayObject(rhs, right.instance)) return raiseNull(kTypeError, rowOf(kRows, op).notAnArrayMessage);
  if (!shapeEqualsNdArray(lhs, left.instance, rhs, right.instance)) return raiseNull(kValueException, kShapeMismatch);
  const NdArrayDoubleBufferView in = ensureNdArrayDoubleBuffer(lhs, left.instance, true, true);
  return in.data != nullptr ? overBuffers(left, right, in, op) : overLists(lhs, rhs, op);
}
