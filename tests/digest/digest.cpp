// Prints one line per native: its name and a digest of the bits of its results on a fixed corpus. Two builds, or two
// processors, compute the same when they print the same. All NaNs count as one.
#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <string>
#include <vector>

#include "host/host.h"
#include "runtime/elementKinds.h"

namespace {

using host::Handle;

constexpr unsigned char kLong = 7, kDouble = 10;
constexpr double kInfinity = std::numeric_limits<double>::infinity(), kNan = std::numeric_limits<double>::quiet_NaN();
const host::Module* gModule = nullptr;

template <class Result = void*, class... Arguments>
Result call(const std::string& method, Arguments... arguments) {
  return reinterpret_cast<Result (*)(Arguments...)>(gModule->native("vesk.math", "NDArray", method))(arguments...);
}

// FNV-1a over 64-bit words (G. Fowler, L. C. Noll, P. Vo).
struct Digest {
  std::uint64_t state = 0xcbf29ce484222325;

  void addWord(std::uint64_t word) { state = (state ^ word) * 0x100000001b3; }
  void addText(const std::string& text) {
    std::for_each(text.begin(), text.end(), [this](char c) { addWord(c & 0xff); });
  }
  void addDouble(double value) { addWord(std::bit_cast<std::uint64_t>(std::isnan(value) ? kNan : value)); }
  // The elements of an array, the value of a box, or the exception.
  void addResult(const Handle& result) {
    if (const auto raised = host::takeException()) addText(raised->typeName + raised->message);
    if (result.get() == nullptr) return;
    const std::string type = Vesk_objectTypeName(result.get());
    addText(type);
    addDouble(Vesk_getField_double(result.get(), "_value"));
    addWord(static_cast<std::uint64_t>(Vesk_getField_i64(result.get(), "_value")));
    const long long size = type.find("NDArray") == type.npos ? 0 : Vesk_getField_i64(result.get(), "_size");
    for (long long i = 0; i < size; ++i) addResult(Handle(call("getFlatNative", result.get(), i)));
  }
  void print(const char* name) const { std::printf("%s %016llx\n", name, static_cast<unsigned long long>(state)); }
};

// Numbers of many magnitudes and both signs; with `odd`, every third one is a special case.
std::vector<double> corpus(std::size_t count, std::uint64_t seed, bool odd = false) {
  static constexpr double kOdd[] = {0.0,    -0.0,  1.0,        -1.0,      0.5,  -2.5,        0.49999999999999994,
                                    0x1p52, 1e308, -kInfinity, kInfinity, kNan, 1 + 0x1p-27, 30.0};
  std::vector<double> values;
  for (std::uint64_t state = seed * 0x9e3779b97f4a7c15 + 1; values.size() < count;) {
    state ^= state << 13, state ^= state >> 7, state ^= state << 17;
    const double number =
        std::ldexp(static_cast<double>(static_cast<std::int64_t>(state)), static_cast<int>(state % 23) - 74);
    values.push_back(odd && values.size() % 3 == 2 ? kOdd[state % std::size(kOdd)] : number);
  }
  return values;
}

// An array in the given shape, every element `fill`.
Handle filled(unsigned char kind, const std::vector<long long>& shape, double fill) {
  const Handle extents(host::newPrimitiveList(kLong, shape.size())), box(Vesk_boxDouble(fill));
  std::copy(shape.begin(), shape.end(), reinterpret_cast<long long*>(getListData(extents.get())->primitives.data));
  Handle array(Vesk_allocObject(("vesk.math.NDArray<vesk." + std::string(kElementKindNames[kind]) + ">").c_str()));
  call<void>("initFilledFastNative", array.get(), extents.get(), box.get());
  return array;
}
// A one-dimensional array: doubles in a native buffer without a cached sum, other kinds packed.
Handle arrayOf(unsigned char kind, const std::vector<double>& values) {
  const auto count = static_cast<long long>(values.size());
  Handle array = filled(kind, {count}, 0.0);
  if (kind == kDouble) {
    const Handle raw(call("fromDoubleBufferFastNative", "vesk.math.NDArray<vesk.Double>", values.data(), count, 0.0));
    return Handle(call("_subNative", raw.get(), array.get()));
  }
  unsigned char* element = getListData(Vesk_getField_ptr(array.get(), "_data"))->primitives.data;
  for (const double value : values)
    visitElementKind(
        kind,
        [&](auto row) {
          row.store(element, static_cast<typename decltype(row)::Stored>(static_cast<long long>(value)));
          element += row.kWidth;
        },
        [] {});
  return array;
}
Handle matrix(long long rows, long long columns, std::uint64_t seed) {
  Handle array = filled(kDouble, {rows, columns}, 0.0);
  const std::vector<double> values = corpus(static_cast<std::size_t>(rows * columns), seed);
  for (long long i = 0; i < rows * columns; ++i)
    call<void>("setDouble2DNative", array.get(), i / columns, i % columns, values[static_cast<std::size_t>(i)]);
  return array;
}

struct Unary {
  const char* method;
  double least = -kInfinity, most = kInfinity;  // of its domain
};
constexpr Unary kUnary[] = {
    {"abs"},        {"round"},       {"floor"},   {"ceil"},        {"trunc"},       {"sqrt", 0},   {"cbrt"},
    {"sin"},        {"cos"},         {"tan"},     {"asin", -1, 1}, {"acos", -1, 1}, {"atan"},      {"sinh"},
    {"cosh"},       {"tanh"},        {"exp"},     {"exp2"},        {"expm1"},       {"log", 1e-9}, {"log10", 1e-9},
    {"log2", 1e-9}, {"log1p", -0.9}, {"degrees"}, {"radians"},     {"sum"},         {"sort"}};
constexpr const char* kBinary[] = {"_addNative", "_subNative", "_mulNative", "_divNative",
                                   "atan2",      "pow",        "hypot",      "fmod"};

// Doubles with and without special cases at many lengths, then packed lists of every kind and the boxes they become.
void digestUnary(const Unary& native) {
  Digest digest;
  const auto add = [&](unsigned char kind, std::vector<double> values) {
    for (double& value : values) value = std::clamp(value, native.least, native.most);
    const Handle array = arrayOf(kind, values);
    for (int again = 0; again < 2; ++again) digest.addResult(Handle(call(native.method, array.get())));
  };
  for (const bool odd : {false, true})
    for (const std::size_t length : {1, 2, 3, 4, 5, 7, 8, 9, 32, 33, 257}) add(kDouble, corpus(length, 1, odd));
  for (unsigned char kind = 1; kind <= kBooleanKind; ++kind) add(kind, corpus(33, kind));
  digest.print(native.method);
}
void digestBinary(const char* method) {
  Digest digest;
  const auto add = [&](const Handle& lhs, const Handle& rhs) {
    for (int again = 0; again < 2; ++again) digest.addResult(Handle(call(method, lhs.get(), rhs.get())));
  };
  for (const std::size_t length : {1, 2, 3, 4, 5, 7, 8, 9, 32, 33, 257})
    add(arrayOf(kDouble, corpus(length, 2, true)), arrayOf(kDouble, corpus(length, 3, true)));
  for (unsigned char left = 1; left <= kBooleanKind; ++left)
    for (unsigned char right = 1; right <= kBooleanKind; ++right) {
      const Handle lhs = arrayOf(left, corpus(33, left)), rhs = arrayOf(right, corpus(33, right + 20u));
      add(lhs, rhs);
      call("abs", lhs.get()), call("abs", rhs.get());  // packed lists become boxes
      add(lhs, rhs);
    }
  digest.print(method);
}
void digestProducts() {
  Digest digest;
  for (const auto [m, k, n] : {std::array{1, 1, 1}, {2, 3, 2}, {3, 4, 5}, {7, 9, 6}, {17, 33, 20}, {40, 65, 41}}) {
    const Handle product(call("_matmulNative", matrix(m, k, 10).get(), matrix(k, n, 11).get()));
    digest.addResult(product);
    digest.addResult(Handle(call("sum", product.get())));
  }
  digest.print("_matmulNative");
}
void digestConstructors() {
  Digest digest;
  for (unsigned char kind = 1; kind <= kBooleanKind; ++kind)
    for (const double fill : {0.1, -1.0, 300.0, 1e10})
      for (const std::vector<long long>& shape : {std::vector<long long>{3, 5}, {40}, {0}, {2, 3, 4}})
        digest.addResult(filled(kind, shape, fill));
  const Handle list(host::newPrimitiveList(kDouble, 50));
  host::seedFastRandom(1);
  reinterpret_cast<void (*)(void*, long long)>(gModule->native("vesk.math", "Random", "fillRandom"))(list.get(), 50);
  for (int i = 0; i < 50; ++i) digest.addDouble(reinterpret_cast<double*>(getListData(list.get())->primitives.data)[i]);
  digest.print("constructors");
}

}  // namespace

int main() {
  const host::AttachedThread attached;
  const host::Module module(host::defaultModulePath());
  gModule = &module;
  for (const Unary& native : kUnary) digestUnary(native);
  for (const char* method : kBinary) digestBinary(method);
  digestProducts();
  digestConstructors();
}
