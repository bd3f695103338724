#include "construction/random.h"

#include <chrono>
#include <cstring>
#include <string>

#include "construction/fastConstructors.h"
#include "construction/uniformGenerator.h"
#include "ndarray/recognition.h"
#include "ndarray/sharedShapes.h"
#include "runtime/elementKinds.h"
#include "runtime/listDataLock.h"
#include "runtime/raise.h"
#include "runtime/rootSlot.h"

namespace {

constexpr unsigned long kMaxDoubles = (1UL << 61) - 1;  // more have no 64-bit byte count
constexpr const char* kNoElements = "shape dimensions must be > 0";

// Constant-initialised and trivially destroyed, so that a thread's first look costs nothing and its end runs nothing.
thread_local constinit UniformGenerator gThreadGenerator{0, 0xD1B54A32D192ED03};
thread_local constinit bool gThreadGeneratorSeeded = false;

UniformGenerator& threadGenerator() {
  UniformGenerator& generator = gThreadGenerator;
  if (!gThreadGeneratorSeeded) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const long long nanoseconds = std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
    generator.s0 = static_cast<std::uint64_t>(nanoseconds) ^ 0x9E3779B97F4A7C15;
    gThreadGeneratorSeeded = true;
  }
  return generator;
}

void storeSum(NdArrayDoubleStorage& storage, double sum) {
  storage.cachedSum = sum;
  storage.sumValid = 1;
}

// Makes the list at least `count` items long, new ones null or unwritten; raises for lists that cannot hold doubles.
// May allocate. Caller holds the list lock and keeps the list rooted.
bool makeRoomForRandom(ListData& list, unsigned long count) {
  if (list.primitiveKind == kObjectListKind) {
    SmallObjectVector& items = list.objects;
    if (items.size >= count) return true;
    items.reserve(count);
    std::memset(items.data + items.size, 0, (count - items.size) * sizeof(void*));
    items.size = count;
    return true;
  }
  const bool fits = visitElementKind(
      list.primitiveKind, [&](auto kind) { return kind.kIsFloating && list.primitives.elementSize == kind.kWidth; },
      [] { return false; });
  if (!fits) return raiseFalse(kTypeError, "random fill requires a floating-point list");
  if (list.primitives.size < count) {
    list.primitives.reserve(count);
    list.primitives.size = count;
  }
  return true;
}

double nextHostUniform() { return uniformFromBits(nextFastRandomU64()); }

template <class Kind>
void fillPacked(SmallPrimitiveBuffer& elements, unsigned long count) {
  for (unsigned long i = 0; i < count; ++i) {
    const double value = nextHostUniform();
    Kind::store(elements.data + i * Kind::kWidth, static_cast<typename Kind::Stored>(value));
  }
}

void fillItems(SmallObjectVector& items, unsigned long count, bool asFloat) {
  const std::string floatName = "Float";
  for (unsigned long i = 0; i < count; ++i) {
    const double value = nextHostUniform();
    void* box = asFloat ? boxFloatingLikeLocal(floatName, value) : Vesk_boxDouble(value);
    items.data[i] = box;
  }
}

}  // namespace

double nextNdArrayUniformRandom() { return uniformFromBits(threadGenerator().nextBits()); }

double fillNdArrayUniformRandom(NdArrayDoubleBufferView view) {
  if (view.count == 0) return 0.0;
  UniformGenerator& state = threadGenerator();
  UniformGenerator generator = state;  // in registers during the loop: nobody else sees this thread's state
  const auto next = [&generator] { return uniformFromBits(generator.nextBits()); };
  double sum = 0.0;
  unsigned long i = 0;
  for (; i + 3 < view.count; i += 4) {
    double* group = view.data + i;
    for (unsigned long j = 0; j < 4; ++j) group[j] = next();
    sum = sum + (((group[0] + group[1]) + group[2]) + group[3]);
  }
  for (; i < view.count; ++i) {
    view.data[i] = next();
    sum = sum + view.data[i];
  }
  state = generator;
  return sum;
}

void* makeRandomNdArray1D(const char* typeName, long long length) {
  RootSlot array;
  double* values = nullptr;
  NdArrayDoubleStorage* storage = makeNdArrayDoubles1D(array, typeName, length, values);
  if (storage == nullptr) return nullptr;
  storeSum(*storage, fillNdArrayUniformRandom({values, static_cast<unsigned long>(length)}));
  storage->ready = 1;
  return array.get();
}

void* makeRandomDoubleBuffer(long long count) {
  if (count <= 0) return raiseNull(kValueException, kNoElements);
  const unsigned long valueCount = static_cast<unsigned long>(count);
  const unsigned long slots = valueCount + 1;  // the sum follows the values
  auto* buffer = slots > kMaxDoubles ? nullptr : static_cast<double*>(Vesk_gcAllocAtomic(slots * sizeof(double)));
  if (buffer == nullptr) return raiseNull(kOutOfMemoryError, "Cannot allocate NDArray<Double> random buffer");
  buffer[valueCount] = fillNdArrayUniformRandom({buffer, valueCount});
  return buffer;
}

void fillNdArrayRandom(void* array) {
  if (array == nullptr) return;
  const NdArrayDoubleBufferView view = ensureNdArrayDoubleBuffer(array, false, false);
  if (view.data != nullptr) {
    const double sum = fillNdArrayUniformRandom(view);
    NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(getObject(array));
    if (storage != nullptr) storeSum(*storage, sum);
    return;
  }
  const RootSlot arraySlot(array);
  void* list = writableNdArrayDataList(array);
  if (list != nullptr) fillRandomList(list, Vesk_getField_i64(array, "_size"));
}

void fillRandomList(void* list, long long count) {
  if (list == nullptr) return;
  const RootSlot listSlot(list);
  ListData& data = *getListData(list);
  const ListDataLock lock(data);
  if (count < 0) return Vesk_raise(kValueException, "random fill count must be non-negative");
  const auto length = static_cast<unsigned long>(count);
  if (!makeRoomForRandom(data, length)) return;
  const bool asFloat = firstGenericArgShortType(runtimeTypeNameOf(list)) == "Float";
  visitElementKind(
      data.primitiveKind,
      [&](auto kind) {
        if constexpr (kind.kIsFloating) fillPacked<decltype(kind)>(data.primitives, length);
      },
      [&] { fillItems(data.objects, length, asFloat); });
}
