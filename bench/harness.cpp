#include "harness.h"

#include <map>
#include <random>
#include <utility>

#include "runtime/rootSlot.h"

namespace bench {
namespace {

const char* const kDoubleArrayType = "vesk.math.NDArray<vesk.Double>";

using Key = std::pair<unsigned long, int>;

void* makeDoubleArray(const std::vector<double>& values) {
  using Constructor = void*(const char*, const double*, long long, double);
  static auto* const fromDoubles = native<Constructor>("fromDoubleBufferFastNative");
  return fromDoubles(kDoubleArrayType, values.data(), static_cast<long long>(values.size()), 0.0);
}

void* makeSquareMatrix(unsigned long extent, int stream) {
  RootSlot shape(host::newObjectList());
  ListData& list = *getListData(shape.get());
  for (unsigned long i = 0; i < 2; ++i) {
    RootSlot box(Vesk_boxInt(static_cast<long long>(extent)));
    list.objects.reserve(2);
    list.objects.data[list.objects.size++] = box.get();
  }
  RootSlot fill(Vesk_boxDouble(0.0));
  RootSlot array(Vesk_allocObject(kDoubleArrayType));
  native<void(void*, void*, void*)>("initFilledFastNative")(array.get(), shape.get(), fill.get());
  const std::vector<double>& values = plainDoubles(extent * extent, stream);
  std::copy(values.begin(), values.end(), valuesOf(array.get()));
  return keep(array.get());
}

}  // namespace

void* nativeAddress(const char* method) {
  static const host::Module module(host::defaultModulePath());
  return module.native("vesk.math", "NDArray", method);
}

const std::vector<double>& plainDoubles(unsigned long length, int stream) {
  static std::map<Key, std::vector<double>> made;
  std::vector<double>& values = made[{length, stream}];
  if (values.empty()) {
    std::mt19937_64 generator(static_cast<unsigned long>(stream) + 1);
    std::uniform_real_distribution<double> distribution(0.05, 0.95);
    values.resize(length);
    for (double& value : values) value = distribution(generator);
  }
  return values;
}

void* doubleArray(unsigned long length, int stream) {
  static std::map<Key, void*> made;
  void*& array = made[{length, stream}];
  if (array == nullptr) array = keep(makeDoubleArray(plainDoubles(length, stream)));
  return array;
}

void* squareMatrix(unsigned long extent, int stream) {
  static std::map<Key, void*> made;
  void*& array = made[{extent, stream}];
  if (array == nullptr) array = makeSquareMatrix(extent, stream);
  return array;
}

NdArrayDoubleStorage& storageOf(void* array) { return *currentNdArrayDoubleStorage(getObject(array)); }

double* valuesOf(void* array) {
  NdArrayDoubleStorage& storage = storageOf(array);
  return storage.heapAllocated != 0 ? storage.heapValues : storage.inlineValues;
}

double* reusedOutput(unsigned long length) { return valuesOf(doubleArray(length, -1)); }

void* keep(void* object) {
  static std::vector<host::Handle> handles;
  handles.emplace_back(object);
  return object;
}

}  // namespace bench
