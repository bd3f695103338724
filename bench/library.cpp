// The functions of the mathematics library: a native against a plain loop over the same function.
#include <cmath>

#include "harness.h"

namespace bench {
namespace {

using Function = double(double);
using Function2 = double(double, double);

// A loop over a function of the library, called as the natives call it.
template <Function* Of>
void loop(double* out, const double* in, const double*, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) out[i] = Of(in[i]);
}
template <Function2* Of>
void loop2(double* out, const double* lhs, const double* rhs, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) out[i] = Of(lhs[i], rhs[i]);
}

double degrees(double x) { return x * 180.0 / M_PI; }
double radians(double x) { return x * M_PI / 180.0; }

struct Case {
  const char* name;
  bool isBinary;
  void (*plain)(double*, const double*, const double*, unsigned long);
  bool isCurve = false;
};

constexpr Case kCases[] = {
    {"sqrt", false, loop<::sqrt>},     {"cbrt", false, loop<::cbrt>},     {"sin", false, loop<::sin>, true},
    {"cos", false, loop<::cos>},       {"tan", false, loop<::tan>},       {"asin", false, loop<::asin>},
    {"acos", false, loop<::acos>},     {"atan", false, loop<::atan>},     {"sinh", false, loop<::sinh>},
    {"cosh", false, loop<::cosh>},     {"tanh", false, loop<::tanh>},     {"exp", false, loop<::exp>, true},
    {"exp2", false, loop<::exp2>},     {"expm1", false, loop<::expm1>},   {"log", false, loop<::log>},
    {"log10", false, loop<::log10>},   {"log2", false, loop<::log2>},     {"log1p", false, loop<::log1p>},
    {"degrees", false, loop<degrees>}, {"radians", false, loop<radians>}, {"atan2", true, loop2<::atan2>},
    {"pow", true, loop2<::pow>},       {"hypot", true, loop2<::hypot>},   {"fmod", true, loop2<::fmod>},
};

constexpr unsigned long kJudged = 100'000;

void addCase(const Case& function, unsigned long length) {
  const Row row{std::string("library/") + function.name, length, length == kJudged ? 1.05 : 0, "plain loop"};
  addPart(row, "native", [function](unsigned long count) {
    const std::string method = '_' + std::string(function.name) + "Native";
    return elementwiseCall(method.c_str(), function.isBinary, doubleArray(count, 0), doubleArray(count, 1));
  });
  addResultPart(row);
  addPart(row, "limit", [function](unsigned long count) {
    return
        [=, out = reusedOutput(count), lhs = valuesOf(doubleArray(count, 0)), rhs = valuesOf(doubleArray(count, 1))] {
          function.plain(out, lhs, rhs, count);
          benchmark::ClobberMemory();
        };
  });
}

}  // namespace

void addLibraryRows() {
  for (const Case& function : kCases) {
    for (const unsigned long length : kCurveLengths) {
      if (length == kJudged || (function.isCurve && length <= 1'000'000)) addCase(function, length);
    }
  }
}

}  // namespace bench
