// The vocabulary of the model: numbers, type names, boxes, lists and arrays as the language defines them.
#pragma once

#include <algorithm>
#include <cmath>
#include <numeric>

#include "runtime/elementKinds.h"
#include "support/model.h"

namespace model {

using Kind = Node::Kind;
using std::string;
using U = unsigned long long;
inline constexpr int kFloat = 9, kDouble = 10, kBoolean = 11;

[[noreturn]] inline void raise(const string& type, const string& message) { throw Raised(type, message); }

// ---- Numbers.

inline long long toInteger(double x) {
  return x >= -0x1p63 && x < 0x1p63 ? static_cast<long long>(x) : -0x7fffffffffffffff - 1;
}

// The value as a packed element of the kind holds it. Odd integer kinds are signed, even ones unsigned.
inline Number narrow(int kind, long long value) {
  if (kind == kBoolean) return value != 0 ? 1 : 0;
  const int dropped = 64 - (8 << (kind - 1) / 2);
  if (dropped == 0) return static_cast<Number>(value);
  const U high = static_cast<U>(value) << dropped;
  return static_cast<Number>(kind % 2 != 0 ? static_cast<long long>(high) >> dropped : (long long)(high >> dropped));
}

// The one of the two that an element of the kind is computed as.
inline Number packedNumber(int kind, double real, long long whole) {
  if (kind == kFloat) return static_cast<float>(real);
  return kind == kDouble ? real : narrow(kind, whole);
}

inline bool hasAvx2() { return __builtin_cpu_supports("avx2") != 0; }

// The sum in the order of the kernels with AVX2 or of those without; of products it is the dot product.
inline double orderedSum(const std::vector<double>& terms, bool avx2 = hasAvx2()) {
  std::size_t i = 0;
  double sum = 0;
  if (terms.size() >= 4) {
    double lane[4] = {0, 0, 0, 0};
    for (; i + 4 <= terms.size(); i += 4)
      for (std::size_t j = 0; j < 4; ++j) lane[j] += terms[i + j];
    sum = avx2 ? ((lane[0] + lane[1]) + lane[2]) + lane[3] : (lane[0] + lane[1]) + (lane[2] + lane[3]);
  }
  for (; i < terms.size(); ++i) sum += terms[i];
  return sum;
}

// Stable insertion up to 32 values (a NaN stays in its place), above that the standard sort with NaNs behind.
template <class T, class Key>
void sortBy(std::vector<T>& values, Key key) {
  const auto less = [&](const T& x, const T& y) { return key(x) < key(y); };
  if (values.size() > 32) {
    const auto isNumber = [&](const T& x) { return key(x) == key(x); };
    return std::sort(values.begin(), std::stable_partition(values.begin(), values.end(), isNumber), less);
  }
  for (std::size_t i = 1; i < values.size(); ++i)
    for (std::size_t j = i; j > 0 && less(values[j], values[j - 1]); --j) std::swap(values[j], values[j - 1]);
}

// ---- Type names.

inline bool isFloating(const string& name) { return name == "Float" || name == "Double"; }

inline bool isNumber(const string& name) {
  return !name.empty() &&
         std::find(std::begin(kElementKindNames), std::end(kElementKindNames), name) != std::end(kElementKindNames);
}

// "vesk.NDArray" is an alias that the host knows.
inline bool isArray(Ref object) {
  if (object == nullptr) return false;
  const string base = object->type.substr(0, object->type.find('<'));
  return object->type.find("NDArray__T_") != string::npos || base == "NDArray" || base == "vesk.math.NDArray" ||
         base == "vesk.NDArray";
}

inline string elementTypeOf(const string& type) {
  const std::size_t open = type.find('<');
  const std::size_t form = type.find("__T_");
  if (open == string::npos) return form == string::npos ? "" : type.substr(form + 4);
  const string name = type.substr(open + 1, type.find_first_of(",>", open) - open - 1);
  return name.substr(name.rfind('.') + 1);
}

inline string doubleTypeLike(const string& type) {
  const string base = type.substr(0, type.find('<'));
  return (base == "NDArray" ? "vesk.math.NDArray" : base) + "<vesk.Double>";
}

// ---- Boxes, read and written as the host does it. Null and what is no box read as 0.

inline double doubleOf(Ref item) {
  return item == nullptr || item->kind != Kind::Box ? 0.0 : static_cast<double>(item->value);
}
inline long long integerOf(Ref item) {
  if (item == nullptr || item->kind != Kind::Box) return 0;
  return isFloating(item->type) ? toInteger(doubleOf(item)) : static_cast<long long>(item->value);
}

inline Ref newBox(Model& m, const string& type, Number value) {
  Ref box = m.world.make(Kind::Box, type);
  box->value = type == "Boolean" ? static_cast<Number>(value != 0) : value;
  return box;
}
// A computed double, stored as that type stores it.
inline Ref newRealBox(Model& m, const string& type, double value) {
  if (type == "Float") return newBox(m, type, static_cast<float>(value));
  return newBox(m, type, type == "Double" || type == "Boolean" ? value : static_cast<Number>(toInteger(value)));
}

// ---- Lists.

inline bool isFloatingKind(int kind) { return kind == kFloat || kind == kDouble; }

inline long long integerAt(Ref list, std::size_t i) {
  if (list->packed == 0) return integerOf(list->items[i]);
  const Number value = list->elements[i];
  if (isFloatingKind(list->packed)) return toInteger(static_cast<double>(value));
  return list->packed == kBoolean ? value != 0 : static_cast<long long>(value);
}

inline double doubleAt(Ref list, std::size_t i) {
  return isFloatingKind(list->packed) ? static_cast<double>(list->elements[i])
                                      : static_cast<double>(integerAt(list, i));
}

inline std::size_t lengthOf(Ref list) { return list->packed != 0 ? list->elements.size() : list->items.size(); }

enum class Reading { None, Boolean, Integer, Floating };
struct Profile {
  Reading reading;
  string type;
};

inline Profile profileOf(Ref list) {
  const string& name = list->elementName;
  if (list->packed == kBoolean) return {Reading::Boolean, "Boolean"};
  if (isFloatingKind(list->packed)) return {Reading::Floating, name.empty() ? "Double" : name};
  if (list->packed != 0) return {Reading::Integer, name.empty() ? "Int" : name};
  const auto first = std::find_if(list->items.begin(), list->items.end(), [](Ref item) { return item != nullptr; });
  if (first == list->items.end()) return {Reading::Floating, "Double"};
  if ((*first)->kind != Kind::Box) return {Reading::None, "Double"};
  const string& type = (*first)->type;
  return {type == "Boolean" ? Reading::Boolean : isFloating(type) ? Reading::Floating : Reading::Integer, type};
}

inline double readDouble(Ref item, Reading reading) {
  if (reading == Reading::Boolean) return doubleOf(item) != 0 ? 1.0 : 0.0;
  if (reading == Reading::Integer) return static_cast<double>(integerOf(item));
  return reading == Reading::Floating ? doubleOf(item) : 0.0;
}
inline long long readInteger(Ref item, Reading reading) {
  return reading == Reading::Integer ? integerOf(item) : toInteger(readDouble(item, reading));
}

inline std::vector<double> listAsDoubles(Ref list) {
  std::vector<double> values;
  const Reading reading = profileOf(list).reading;
  for (std::size_t i = 0; i < lengthOf(list); ++i)
    values.push_back(list->packed != 0 ? doubleAt(list, i) : readDouble(list->items[i], reading));
  return values;
}

inline Ref elementBox(Model& m, Ref list, std::size_t i, const string& unnamed) {
  const string type = list->elementName.empty() ? unnamed : list->elementName;
  if (list->packed == kBoolean) return newBox(m, "Boolean", list->elements[i]);
  if (!isFloatingKind(list->packed))
    return newBox(m, isFloating(type) ? "Int" : type, static_cast<Number>(integerAt(list, i)));
  return newBox(m, type == "Float" ? type : "Double", list->elements[i]);
}

inline void materialize(Model& m, Ref list) {
  if (list->packed == 0) return;
  list->items.clear();
  for (std::size_t i = 0; i < list->elements.size(); ++i) list->items.push_back(elementBox(m, list, i, "Int"));
  list->elements.clear();
  list->elementName.clear();
  list->packed = 0;
}

inline Ref newList(Model& m, std::vector<Ref> items = {}) {
  Ref list = m.world.make(Kind::List, "");
  list->items = std::move(items);
  return list;
}

// Null when the host declines.
inline Ref newPackedList(Model& m, const string& elementType) {
  if (!m.available()) return nullptr;
  Ref list = newList(m);
  list->elementName = elementType;
  while (kElementKindNames[list->packed] != elementType) ++list->packed;
  return list;
}

// A list of shared boxes, itself shared when it has a name.
inline Ref boxList(Model& m, const std::vector<long long>& values, const string& shared = "") {
  Ref list = newList(m);
  list->shared = shared;
  for (long long value : values) {
    list->items.push_back(newBox(m, "UInt", static_cast<Number>(value)));
    list->items.back()->shared = "box " + std::to_string(value);
  }
  return list;
}

// ---- Arrays.

inline bool usesBuffer(Ref array) { return isArray(array) && elementTypeOf(array->type) == "Double"; }

// The array's buffer with its current values, or null when it has none.
inline Buffer* bufferOf(Model& m, Ref array, bool fillFromList = true, bool zeroFill = true) {
  if (!usesBuffer(array) || (!array->buffer && !m.available())) return nullptr;
  if (!array->buffer) array->buffer.emplace();
  Buffer& buffer = *array->buffer;
  const unsigned long count = static_cast<unsigned long>(std::max(array->size, 0LL));
  if (buffer.heap != (count > 32) || buffer.count != count) buffer = {count, count > 32, false, false, false, 0, {}};
  if (buffer.ready) return &buffer;
  buffer.ready = true;
  const Ref list = fillFromList ? array->data : nullptr;
  if (list != nullptr && lengthOf(list) != 0 && profileOf(list).reading != Reading::None) {
    buffer.values = listAsDoubles(list);
    buffer.values.resize(count, 0.0);
    buffer.sumValid = true;
    buffer.sum = 0;
    for (std::size_t i = 0; i < std::min(count, lengthOf(list)); ++i) buffer.sum += buffer.values[i];
    return &buffer;
  }
  buffer.values.assign(zeroFill ? count : 0, 0.0);
  buffer.sumValid = zeroFill;
  buffer.sum = 0;
  return &buffer;
}

// A buffer that is ready is taken as it is, whatever the array says of itself.
inline Buffer* readyBuffer(Model& m, Ref array) {
  return array->buffer && array->buffer->ready ? &*array->buffer : bufferOf(m, array);
}

inline long long extentAt(Ref shape, std::size_t i) { return i < lengthOf(shape) ? integerAt(shape, i) : 0; }

inline void refreshPrefix(Ref array) {
  array->dim0 = array->dim1 = array->prefixValid = 0;
  if (array->shape == nullptr || array->ndim < 1 || lengthOf(array->shape) < (array->ndim == 1 ? 1 : 2)) return;
  array->dim0 = extentAt(array->shape, 0);
  array->dim1 = extentAt(array->shape, 1);
  array->prefixValid = true;
}

// Of an array, or of a shape list itself.
inline std::vector<long long> extentsOf(Ref node) {
  Ref shape = node->kind == Kind::List ? node : node->shape;
  std::vector<long long> extents;
  for (std::size_t i = 0; shape != nullptr && i < lengthOf(shape); ++i) extents.push_back(extentAt(shape, i));
  return extents;
}

inline bool shapesEqual(Ref a, Ref b) {
  const bool both = a->hasMetadata && b->hasMetadata;
  if (a->ndim != b->ndim || (both && a->size != b->size)) return false;
  if (a->shape != nullptr && a->shape == b->shape) return true;
  if (both && a->prefixValid && b->prefixValid && a->ndim <= 2) return a->dim0 == b->dim0 && a->dim1 == b->dim1;
  return a->shape != nullptr && b->shape != nullptr && extentsOf(a) == extentsOf(b);
}

// Fills the result's description from its source; the data list is fresh, with so many null slots.
inline Ref resultLike(Model& m, Ref source, const string& type, std::size_t slots) {
  Ref result = m.world.make(Kind::Array, type);
  std::tie(result->ndim, result->size, result->shape, result->strides) =
      std::tie(source->ndim, source->size, source->shape, source->strides);
  result->data = newList(m, std::vector<Ref>(slots, nullptr));
  result->hasMetadata = true;
  if (!source->hasMetadata) return refreshPrefix(result), result;
  std::tie(result->dim0, result->dim1, result->prefixValid) = std::tie(source->dim0, source->dim1, source->prefixValid);
  return result;
}

// The list's values, read as what it holds; raises when that is no numbers.
inline std::vector<double> numbersOf(Model& m, Ref list, const string& complaint) {
  materialize(m, list);
  if (profileOf(list).reading == Reading::None) raise("TypeError", complaint);
  return listAsDoubles(list);
}

inline Buffer& resultBuffer(Model& m, Ref result,
                            const char* message = "cannot allocate native NDArray<Double> result") {
  Buffer* buffer = bufferOf(m, result, false, false);
  if (buffer == nullptr) raise("TypeError", message);
  return *buffer;
}

inline Ref dataOf(Ref array) {
  if (array->data == nullptr) raise("TypeError", "Invalid NDArray instance");
  return array->data;
}

}  // namespace model
