#include "reductions/sum.h"

#include <string>

#include "kernels/reduceSum.h"
#include "ndarray/doubleBuffer.h"
#include "ndarray/numericProfile.h"
#include "ndarray/recognition.h"
#include "runtime/integerRules.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"
#include "runtime/rootSlot.h"

namespace {

constexpr const char* kEmpty = "empty NDArray";
constexpr const char* kNullItem = "sum does not support null values";
constexpr const char* kNoNumbers = "sum expects numeric NDArray items";

// How boxed items are read and added up, per kind of number.
struct FloatingItems {
  using Number = double;
  static double read(void* item) { return Vesk_getField_double(item, "_value"); }
  static double add(double sum, double value) { return sum + value; }
  static double repeat(unsigned long count, double value) { return static_cast<double>(count) * value; }
  static void* box(const std::string& typeName, double sum) { return boxFloatingLikeLocal(typeName, sum); }
};

struct IntegerItems {
  using Number = long long;
  static long long read(void* item) { return Vesk_getField_i64(item, "_value"); }
  static long long add(long long sum, long long value) { return wrapAdd(sum, value); }
  static long long repeat(unsigned long count, long long value) {
    return wrapMultiply(static_cast<long long>(count), value);
  }
  static void* box(const std::string& typeName, long long sum) { return boxIntegerLikeLocal(typeName, sum); }
};

// One item repeated is multiplied, which for doubles is another result than adding it up.
template <class Items>
void* boxItemSum(const SmallObjectVector& items, const std::string& typeName) {
  void* shared = nullptr;
  if (listItemsShareSinglePointer(items, shared)) {
    return Items::box(typeName, Items::repeat(items.size, Items::read(shared)));
  }
  typename Items::Number sum = 0;
  for (unsigned long i = 0; i < items.size; ++i) {
    if (items.data[i] == nullptr) return raiseNull(kTypeError, kNullItem);
    sum = Items::add(sum, Items::read(items.data[i]));
  }
  return Items::box(typeName, sum);
}

// The first item's type decides for all.
void* sumItems(const SmallObjectVector& items) {
  if (items.size == 0) return raiseNull(kValueException, kEmpty);
  void* first = items.data[0];
  if (first == nullptr) return raiseNull(kTypeError, kNullItem);
  const std::string typeName = shortTypeName(runtimeTypeNameOf(first));
  if (typeName == "Float" || typeName == "Double") return boxItemSum<FloatingItems>(items, typeName);
  if (isIntegerScalarShortType(typeName)) return boxItemSum<IntegerItems>(items, typeName);
  return raiseNull(kTypeError, kNoNumbers);
}

void* sumIntegerElements(const ListData& list) {
  if (list.primitives.size == 0) return raiseNull(kValueException, kEmpty);
  const SmallPrimitiveBuffer& elements = list.primitives;
  const long long sum = visitElementKind(
      list.primitiveKind,
      [&](auto kind) {
        long long total = 0;
        if (elements.elementSize < kind.kWidth) return total;
        withElementStride(kind, elements.elementSize, [&](auto stride) {
          for (unsigned long i = 0; i < elements.size; ++i) {
            total = wrapAdd(total, kind.toInteger(kind.load(elements.data + i * stride)));
          }
        });
        return total;
      },
      [] { return 0LL; });
  return Vesk_boxInt(sum);
}

// Boxes and raises under the list's lock; the slot keeps the list's mutex alive until it is released.
void* sumDataList(void* array) {
  const RootSlot data(Vesk_getField_ptr(array, "_data"));
  if (data.get() == nullptr) return raiseNull(kValueException, kEmpty);
  ListData& list = *getListData(data.get());
  const ListDataLock lock(list);
  if (isIntegralElementKind(list.primitiveKind)) return sumIntegerElements(list);
  // Packed Float and Double elements count as none, also when a failed materialization left some items behind.
  return list.primitiveKind == kObjectListKind ? sumItems(list.objects) : raiseNull(kValueException, kEmpty);
}

bool hasValidSum(const NdArrayDoubleStorage* storage) { return storage != nullptr && storage->sumValid != 0; }

double sumAndCache(NdArrayDoubleStorage* storage, NdArrayDoubleBufferView view) {
  const double sum = reduceSumBuffer(view.data, view.count);
  if (storage != nullptr) {
    storage->cachedSum = sum;
    storage->sumValid = 1;
  }
  return sum;
}

double sumAs(void* array, const char* elementTypeName, bool caching) {
  if (array == nullptr) return 0.0;
  NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instanceOf(array));
  if (hasValidSum(storage) && storage->ready != 0) return storage->cachedSum;
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, true, true);
  if (view.data == nullptr) {
    void* sum = sumNumericCollection(array, elementTypeName);
    return sum == nullptr ? 0.0 : Vesk_getField_double(sum, "_value");
  }
  storage = currentNdArrayDoubleStorage(getObject(array));
  if (hasValidSum(storage)) return storage->cachedSum;
  return sumAndCache(caching ? storage : nullptr, view);
}

}  // namespace

void* sumNdArray(void* array) {
  if (array == nullptr) return raiseNull(kNullException, "Cannot call NDArray.sum() on null");
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, true, true);
  if (view.data == nullptr) return sumDataList(array);
  NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(getObject(array));
  if (hasValidSum(storage)) return Vesk_boxDouble(storage->cachedSum);
  if (view.count == 0) return raiseNull(kValueException, kEmpty);
  return Vesk_boxDouble(sumAndCache(storage, view));
}

double sumNdArrayAsDouble(void* array) { return sumAs(array, "Double", true); }

double sumNdArrayAsFloat(void* array) { return sumAs(array, "Float", false); }
