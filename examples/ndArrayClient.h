// The module's arrays of doubles as a C++ program sees them: natives resolved once by package, class and method, arrays
// kept alive by handles, and a language exception turned into a C++ one.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "host/host.h"

// What a native raised; what() is "type: message".
struct LanguageError : std::runtime_error {
  explicit LanguageError(const host::Exception& raised) : std::runtime_error(raised.typeName + ": " + raised.message) {}
};

// An NDArray<Double> that stays alive as long as this does.
using Array = host::Handle;

// All calls are made on an attached thread and throw LanguageError when the native raises. Operands of the arithmetic
// operators have equal shapes. Matrices are two-dimensional arrays in row-major order.
class NdArrayClient {
 public:
  explicit NdArrayClient(const host::Module& module);

  Array fromDoubles(const std::vector<double>& values) const;  // one-dimensional; not empty
  Array filled(const std::vector<std::size_t>& shape, double value) const;
  Array matrix(std::size_t rows, std::size_t columns, const std::vector<double>& values) const;

  Array add(const Array& lhs, const Array& rhs) const { return keep(add_(lhs.get(), rhs.get())); }
  Array subtract(const Array& lhs, const Array& rhs) const { return keep(subtract_(lhs.get(), rhs.get())); }
  Array multiply(const Array& lhs, const Array& rhs) const { return keep(multiply_(lhs.get(), rhs.get())); }
  Array divide(const Array& lhs, const Array& rhs) const { return keep(divide_(lhs.get(), rhs.get())); }
  Array matmul(const Array& lhs, const Array& rhs) const { return keep(matmul_(lhs.get(), rhs.get())); }
  Array pow(const Array& base, double exponent) const;
  Array sqrt(const Array& array) const { return keep(sqrt_(array.get())); }
  Array abs(const Array& array) const { return keep(abs_(array.get())); }
  Array log(const Array& array) const { return keep(log_(array.get())); }

  void sort(const Array& array) const;  // in place, ascending
  double sum(const Array& array) const;
  double at(const Array& array, std::size_t index) const;
  double at(const Array& array, std::size_t row, std::size_t column) const;
  std::vector<double> values(const Array& array, std::size_t count) const;  // the first `count`, in index order

 private:
  using Unary = void* (*)(void*);
  using Binary = void* (*)(void*, void*);

  static Array keep(void* result);

  void* (*fromDoubleBuffer_)(const char*, const double*, long long, double);
  void (*initFilled_)(void*, void*, void*);
  void (*set2D_)(void*, long long, long long, double);
  double (*get1D_)(void*, long long);
  double (*get2D_)(void*, long long, long long);
  Binary add_, subtract_, multiply_, divide_, matmul_, pow_;
  Unary sqrt_, abs_, log_, sort_, sum_;
};
