// The element-wise families.
#include "support/modelValues.h"

namespace model {
namespace {

// ---- Arithmetic.

struct Arithmetic {
  const char *name, *symbol;
  double (*real)(double, double);
  long long (*integer)(long long, long long);
};
const Arithmetic kArithmetic[] = {{"add", "+", [](double x, double y) { return x + y; },
                                   [](long long x, long long y) { return (long long)(U(x) + U(y)); }},
                                  {"subtract", "-", [](double x, double y) { return x - y; },
                                   [](long long x, long long y) { return (long long)(U(x) - U(y)); }},
                                  {"multiply", "*", [](double x, double y) { return x * y; },
                                   [](long long x, long long y) { return (long long)(U(x) * U(y)); }},
                                  {"divide", "/", [](double x, double y) { return x / y; },
                                   [](long long x, long long y) {
                                     if (y == 0) raise("ZeroDivisionException", "division by zero");
                                     return y == -1 ? (long long)(0 - U(x)) : x / y;
                                   }}};

void sameCount(std::size_t a, std::size_t b) {
  if (a != b) raise("ValueException", "shape mismatch");
}

// The values of a second operand beside a buffer of `count` values, through its own buffer or its list.
std::vector<double> besideBuffer(Model& m, Ref other, std::size_t count, const string& notNumeric) {
  if (const Buffer* buffer = bufferOf(m, other)) return sameCount(buffer->count, count), buffer->values;
  const std::vector<double> values = numbersOf(m, dataOf(other), notNumeric);
  sameCount(values.size(), count);
  return values;
}

Ref arithmetic(Model& m, const Arithmetic& op, Ref lhs, Ref rhs) {
  constexpr const char* kNotNumeric = "NDArray arithmetic expects numeric values";
  if (lhs == nullptr) return nullptr;
  if (!isArray(rhs)) raise("TypeError", string(op.symbol) + " expects a NDArray operand");
  if (!shapesEqual(lhs, rhs)) raise("ValueException", "shape mismatch");
  if (const Buffer* x = bufferOf(m, lhs)) {
    Ref result = resultLike(m, lhs, lhs->type, x->count);
    Buffer& out = resultBuffer(m, result);
    const std::vector<double> y = besideBuffer(m, rhs, x->count, kNotNumeric);
    for (std::size_t i = 0; i < x->count; ++i) out.values.push_back(op.real(x->values[i], y[i]));
    return result;
  }
  Ref left = dataOf(lhs);
  Ref right = dataOf(rhs);
  const auto isPacked = [](Ref list) { return list->packed != 0 && list->packed != kBoolean; };
  const bool packed = isPacked(left) && isPacked(right);
  if (!packed) materialize(m, left), materialize(m, right);
  sameCount(lengthOf(left), lengthOf(right));
  const Profile x = profileOf(left);
  const Profile y = profileOf(right);
  if (x.reading == Reading::None || y.reading == Reading::None) raise("TypeError", kNotNumeric);
  const bool floating = x.reading == Reading::Floating || y.reading == Reading::Floating;
  Ref result = resultLike(m, lhs, lhs->type, packed ? 0 : lengthOf(left));
  if (packed) {
    Ref out = result->data = newPackedList(m, x.type);
    if (out == nullptr || out->packed == kBoolean) raise("TypeError", "cannot initialize primitive NDArray result");
    for (std::size_t i = 0; i < lengthOf(left); ++i) {
      long long whole = floating ? 0 : op.integer(integerAt(left, i), integerAt(right, i));
      const double real = floating ? op.real(doubleAt(left, i), doubleAt(right, i)) : static_cast<double>(whole);
      if (floating) whole = toInteger(real);
      out->elements.push_back(packedNumber(out->packed, real, whole));
    }
    return result;
  }
  const auto compute = [&](Ref a, Ref b) {
    if (floating) return newRealBox(m, x.type, op.real(readDouble(a, x.reading), readDouble(b, y.reading)));
    return newBox(m, x.type, static_cast<Number>(op.integer(readInteger(a, x.reading), readInteger(b, y.reading))));
  };
  std::vector<Ref>& out = result->data->items;
  const auto isShared = [](Ref list) {
    const auto& items = list->items;
    return !items.empty() && items[0] != nullptr &&
           std::count(items.begin(), items.end(), items[0]) == static_cast<long>(items.size());
  };
  if (isShared(left) && isShared(right))
    out.assign(out.size(), compute(left->items[0], right->items[0]));
  else
    for (std::size_t i = 0; i < out.size(); ++i) out[i] = compute(left->items[i], right->items[i]);
  return result;
}

// ---- Functions of one argument.

struct FloatFunction {
  const char* name;
  double (*value)(double);
  bool (*outside)(double) = nullptr;
  const char* domain = nullptr;
  double groupFactor = 0;  // of the angle conversions, for whole groups of four on an AVX2 processor
};
const FloatFunction kPreserving[] = {
    {"abs", fabs}, {"round", round}, {"floor", floor}, {"ceil", ceil}, {"trunc", trunc}};

Ref preserving(Model& m, const FloatFunction& op, Ref array) {
  if (array == nullptr) return nullptr;
  const bool isAbs = op.value == kPreserving[0].value;
  if (const Buffer* in = bufferOf(m, array)) {
    Ref result = resultLike(m, array, array->type, in->count);
    Buffer& out = resultBuffer(m, result);
    for (double x : in->values) out.values.push_back(op.value(x));
    return result;
  }
  materialize(m, dataOf(array));
  const Profile profile = profileOf(array->data);
  if (profile.reading < Reading::Integer) raise("TypeError", string(op.name) + " expects a numeric NDArray");
  Ref result = resultLike(m, array, array->type, 0);
  for (Ref item : array->data->items) {
    if (profile.reading == Reading::Floating)
      item = newRealBox(m, profile.type, op.value(doubleOf(item)));
    else if (isAbs && integerOf(item) < 0)
      item = newBox(m, profile.type, static_cast<Number>((long long)(0 - U(integerOf(item)))));
    result->data->items.push_back(item);
  }
  return result;
}

constexpr double kPi = 3.141592653589793;
bool isBelowZero(double x) { return x < 0; }
bool isNotPositive(double x) { return x <= 0; }
bool isOutsideUnit(double x) { return x < -1 || x > 1; }
// Not constant, so that the compiler cannot fold what the mathematics library answers at run time.
// clang-format off
FloatFunction gFloatFunctions[] = {
    {"cbrt", cbrt}, {"sin", sin}, {"cos", cos}, {"tan", tan}, {"atan", atan}, {"sinh", sinh}, {"cosh", cosh},
    {"tanh", tanh}, {"exp", exp}, {"exp2", exp2}, {"expm1", expm1}, {"sqrt", sqrt, isBelowZero, "a value >= 0"},
    {"asin", asin, isOutsideUnit, "a value in [-1, 1]"}, {"acos", acos, isOutsideUnit, "a value in [-1, 1]"},
    {"log", log, isNotPositive, "a value > 0"}, {"log10", log10, isNotPositive, "a value > 0"},
    {"log2", log2, isNotPositive, "a value > 0"}, {"log1p", log1p, [](double x) { return x <= -1; }, "a value > -1"},
    {"degrees", [](double x) { return x * 180.0 / kPi; }, nullptr, nullptr, 57.29577951308232},
    {"radians", [](double x) { return x * kPi / 180.0; }, nullptr, nullptr, 0.017453292519943295}};
// clang-format on

Ref floatFunction(Model& m, const FloatFunction& op, Ref array) {
  if (array == nullptr) return nullptr;
  const auto check = [&](double x) {
    if (op.outside != nullptr && op.outside(x)) raise("ValueException", string(op.name) + " expects " + op.domain);
    return x;
  };
  const string type = doubleTypeLike(array->type);
  if (const Buffer* in = bufferOf(m, array)) {
    Ref result = resultLike(m, array, type, in->count);
    Buffer& out = resultBuffer(m, result);
    std::for_each(in->values.begin(), in->values.end(), check);
    const std::size_t grouped = op.groupFactor != 0 && hasAvx2() ? in->count / 4 * 4 : 0;
    for (std::size_t i = 0; i < in->count; ++i)
      out.values.push_back(i < grouped ? in->values[i] * op.groupFactor : op.value(in->values[i]));
    return result;
  }
  const std::vector<double> values = numbersOf(m, dataOf(array), string(op.name) + " expects a numeric NDArray");
  Ref result = resultLike(m, array, type, 0);
  for (double x : values) result->data->items.push_back(newBox(m, "Double", op.value(check(x))));
  return result;
}

// ---- Functions of two arguments.

struct FloatFunction2 {
  const char* name;
  double (*value)(double, double);
};
FloatFunction2 gFloatFunctions2[] = {{"atan2", atan2}, {"pow", pow}, {"hypot", hypot}, {"fmod", fmod}};

Ref floatFunction2(Model& m, const FloatFunction2& op, Ref array, Ref other) {
  if (array == nullptr) return nullptr;
  const string name = op.name;
  const string notNumeric = name + " expects numeric values";
  const string type = doubleTypeLike(array->type);
  const auto number = [&](std::size_t count) {
    if (other == nullptr || other->kind != Kind::Box) raise("TypeError", name + " expects a numeric scalar or NDArray");
    return std::vector<double>(count, doubleOf(other));
  };
  if (const Buffer* in = bufferOf(m, array)) {
    Ref result = resultLike(m, array, type, in->count);
    Buffer& out = resultBuffer(m, result);
    if (isArray(other) && !shapesEqual(array, other)) raise("ValueException", "shape mismatch");
    const std::vector<double> y = isArray(other) ? besideBuffer(m, other, in->count, notNumeric) : number(in->count);
    for (std::size_t i = 0; i < in->count; ++i) out.values.push_back(op.value(in->values[i], y[i]));
    return result;
  }
  const std::vector<double> x = numbersOf(m, dataOf(array), notNumeric);
  Ref result = resultLike(m, array, type, 0);
  if (isArray(other) && !shapesEqual(array, other)) raise("ValueException", "shape mismatch");
  const std::vector<double> y = isArray(other) ? numbersOf(m, dataOf(other), notNumeric) : number(x.size());
  sameCount(x.size(), y.size());
  for (std::size_t i = 0; i < x.size(); ++i) result->data->items.push_back(newBox(m, "Double", op.value(x[i], y[i])));
  return result;
}

}  // namespace
}  // namespace model

std::vector<Operation> elementwiseOperations() {
  std::vector<Operation> all;
  for (const auto& op : model::kArithmetic) all.push_back(operation(op, model::arithmetic));
  for (const auto& op : model::kPreserving) all.push_back(operation(op, model::preserving));
  for (const auto& op : model::gFloatFunctions) all.push_back(operation(op, model::floatFunction));
  for (const auto& op : model::gFloatFunctions2) all.push_back(operation(op, model::floatFunction2));
  return all;
}
