#include "ndArrayClient.h"

#include <cstring>
#include <numeric>

#include "runtime/elementKinds.h"

namespace {

constexpr char kDoubleArray[] = "vesk.math.NDArray<vesk.Double>";

// Stands where a native is taken from the module, so that its type comes from the member it initialises.
struct NativeOf {
  const host::Module& module;
  const char* method;

  template <class Function>
  operator Function*() const {
    return reinterpret_cast<Function*>(module.native("vesk.math", "NDArray", method));
  }
};

void throwPending() {
  if (const auto raised = host::takeException()) throw LanguageError(*raised);
}

// A packed language list of the extents.
Array shapeList(const std::vector<std::size_t>& shape) {
  constexpr unsigned char kLong = 7;
  Array list(host::newPrimitiveList(kLong, shape.size()));
  unsigned char* elements = getListData(list.get())->primitives.data;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    const auto extent = static_cast<long long>(shape[i]);
    std::memcpy(elements + i * sizeof extent, &extent, sizeof extent);
  }
  return list;
}

}  // namespace

NdArrayClient::NdArrayClient(const host::Module& module)
    : fromDoubleBuffer_(NativeOf{module, "fromDoubleBufferFastNative"}),
      initFilled_(NativeOf{module, "initFilledFastNative"}),
      set2D_(NativeOf{module, "setDouble2DNative"}),
      get1D_(NativeOf{module, "getDouble1DNative"}),
      get2D_(NativeOf{module, "getDouble2DNative"}),
      add_(NativeOf{module, "operator_plus"}),
      subtract_(NativeOf{module, "operator_minus"}),
      multiply_(NativeOf{module, "operator_mul"}),
      divide_(NativeOf{module, "operator_div"}),
      matmul_(NativeOf{module, "_matmulNative"}),
      pow_(NativeOf{module, "pow"}),
      sqrt_(NativeOf{module, "sqrt"}),
      abs_(NativeOf{module, "abs"}),
      log_(NativeOf{module, "log"}),
      sort_(NativeOf{module, "sort"}),
      sum_(NativeOf{module, "sumNative"}) {}

// Nothing is allocated between the native's return and the handle.
Array NdArrayClient::keep(void* result) {
  Array array(result);
  throwPending();
  return array;
}

Array NdArrayClient::fromDoubles(const std::vector<double>& values) const {
  const double sum = std::accumulate(values.begin(), values.end(), 0.0);
  return keep(fromDoubleBuffer_(kDoubleArray, values.data(), static_cast<long long>(values.size()), sum));
}

Array NdArrayClient::filled(const std::vector<std::size_t>& shape, double value) const {
  const Array extents = shapeList(shape);
  const Array fill(Vesk_boxDouble(value));
  Array array(Vesk_allocObject(kDoubleArray));
  initFilled_(array.get(), extents.get(), fill.get());
  throwPending();
  return array;
}

Array NdArrayClient::matrix(std::size_t rows, std::size_t columns, const std::vector<double>& values) const {
  Array array = filled({rows, columns}, 0.0);
  for (std::size_t i = 0; i < rows * columns; ++i)
    set2D_(array.get(), static_cast<long long>(i / columns), static_cast<long long>(i % columns), values[i]);
  throwPending();
  return array;
}

Array NdArrayClient::pow(const Array& base, double exponent) const {
  const Array number(Vesk_boxDouble(exponent));
  return keep(pow_(base.get(), number.get()));
}

void NdArrayClient::sort(const Array& array) const {
  sort_(array.get());
  throwPending();
}

double NdArrayClient::sum(const Array& array) const {
  const Array box = keep(sum_(array.get()));
  return Vesk_getField_double(box.get(), "_value");
}

double NdArrayClient::at(const Array& array, std::size_t index) const {
  const double value = get1D_(array.get(), static_cast<long long>(index));
  throwPending();
  return value;
}

double NdArrayClient::at(const Array& array, std::size_t row, std::size_t column) const {
  const double value = get2D_(array.get(), static_cast<long long>(row), static_cast<long long>(column));
  throwPending();
  return value;
}

std::vector<double> NdArrayClient::values(const Array& array, std::size_t count) const {
  std::vector<double> result(count);
  for (std::size_t i = 0; i < count; ++i) result[i] = at(array, i);
  return result;
}
