// Reductions, sorting, element access, construction and random numbers.
#include "support/modelValues.h"

namespace model {
namespace {

constexpr const char* kBadExtent = "shape dimensions must be > 0";
constexpr const char* kTooLarge = "NDArray element count exceeds UInt.MAX_VALUE";
constexpr const char* kNoBuffer = "cannot initialize native NDArray<Double>";
constexpr long long kMaxCount = 0xFFFFFFFF;

// ---- Reductions and sorting.

Ref sum(Model& m, Ref array) {
  const auto empty = [](bool isEmpty) {
    if (isEmpty) raise("ValueException", "empty NDArray");
  };
  if (array == nullptr) raise("NullException", "Cannot call NDArray.sum() on null");
  if (Buffer* buffer = bufferOf(m, array)) {
    empty(!buffer->sumValid && buffer->count == 0);
    if (!buffer->sumValid) buffer->sum = orderedSum(buffer->values);
    buffer->sumValid = true;
    return newBox(m, "Double", buffer->sum);
  }
  Ref list = array->data;
  empty(list == nullptr || lengthOf(list) == 0 || isFloatingKind(list->packed));
  U total = 0;
  if (list->packed != 0) {
    for (std::size_t i = 0; i < lengthOf(list); ++i) total += static_cast<U>(integerAt(list, i));
    return newBox(m, "Int", static_cast<Number>(static_cast<long long>(total)));
  }
  const std::vector<Ref>& items = list->items;
  if (items[0] == nullptr) raise("TypeError", "sum does not support null values");
  if (items[0]->kind != Kind::Box || items[0]->type == "Boolean")
    raise("TypeError", "sum expects numeric NDArray items");
  double real = 0;
  for (Ref item : items) {
    if (item == nullptr) raise("TypeError", "sum does not support null values");
    total += static_cast<U>(integerOf(item));
    real += doubleOf(item);
  }
  if (!isFloating(items[0]->type)) return newBox(m, items[0]->type, static_cast<Number>(static_cast<long long>(total)));
  const bool shared = std::count(items.begin(), items.end(), items[0]) == static_cast<long>(items.size());
  return newBox(m, items[0]->type, shared ? static_cast<double>(items.size()) * doubleOf(items[0]) : real);
}

// Without a buffer it is the host that adds up, item by item, and raises.
double plainSum(Model& m, Ref array, bool caches) {
  if (array == nullptr) return 0;
  if (array->buffer && array->buffer->ready && array->buffer->sumValid) return array->buffer->sum;
  double total = 0;
  if (Buffer* buffer = bufferOf(m, array)) {
    if (buffer->sumValid) return buffer->sum;
    total = orderedSum(buffer->values);
    if (caches) buffer->sum = total, buffer->sumValid = true;
  } else if (array->buffer && array->buffer->ready) {
    total = std::accumulate(array->buffer->values.begin(), array->buffer->values.end(), 0.0);
  } else if (Ref list = array->data) {
    for (Ref item : list->items)
      if (item == nullptr || item->kind != Kind::Box) raise("TypeError", "sum expects numeric NDArray items");
    for (std::size_t i = 0; i < lengthOf(list); ++i)
      total += list->packed != 0 ? doubleAt(list, i) : doubleOf(list->items[i]);
  }
  return total;
}
double sumAsDouble(Model& m, Ref array) { return plainSum(m, array, true); }
double sumAsFloat(Model& m, Ref array) { return plainSum(m, array, false); }

void sort1D(Model& m, Ref array) {
  if (array == nullptr) return;
  if (Buffer* buffer = readyBuffer(m, array)) return sortBy(buffer->values, [](double x) { return x; });
  Ref list = array->data;
  if (list == nullptr) return;
  if (isFloatingKind(list->packed)) return sortBy(list->elements, [](Number x) { return x; });
  const auto key = [&](Number x) { return list->packed == 8 && x < 0 ? x + 0x1p64L : x; };  // ULong is unsigned
  const auto less = [&](Number x, Number y) { return key(x) < key(y); };
  if (list->packed != 0) return std::sort(list->elements.begin(), list->elements.end(), less);
  if (profileOf(list).reading == Reading::Floating) return sortBy(list->items, doubleOf);
  sortBy(list->items, integerOf);
}

Ref sort(Model& m, Ref array) {
  if (array != nullptr && array->ndim != 1)
    throw Raised("ValueException", "sort() without axis requires a 1D NDArray", array);
  return sort1D(m, array), array;
}

Ref matmul(Model& m, Ref a, Ref b) {
  constexpr const char* kMismatch = "matrix multiplication shape mismatch";
  if (a == nullptr) return nullptr;
  if (!isArray(b)) raise("TypeError", "matrix multiplication expects a NDArray operand");
  if (a->ndim != 2 || b->ndim != 2) raise("ValueException", "matrix multiplication requires 2D arrays");
  const Buffer* x = bufferOf(m, a);
  const Buffer* y = bufferOf(m, b);
  if (x == nullptr || y == nullptr) raise("TypeError", "matrix multiplication native path expects NDArray<Double>");
  const std::vector<long long> shape = extentsOf(a);
  const std::vector<long long> other = extentsOf(b);
  if (shape.size() != 2 || other.size() != 2) raise("ValueException", "matrix multiplication requires 2D arrays");
  const long long rows = shape[0], inner = shape[1], columns = other[1];
  if (other[0] != inner) raise("ValueException", kMismatch);
  for (U extent : {U(rows), U(columns)}) {
    if (extent == 0) raise("ValueException", kBadExtent);
    if (extent > kMaxCount) raise("ValueException", kTooLarge);
  }
  if (kMaxCount / columns < rows) raise("ValueException", kTooLarge);
  if (x->count != Number(rows) * Number(inner) || y->count != Number(inner) * Number(columns))
    raise("ValueException", kMismatch);
  Ref result = m.world.make(Kind::Array, a->type);
  result->ndim = 2;
  result->size = rows * columns;
  result->shape = boxList(m, {rows, columns});
  result->strides = boxList(m, {columns, 1});
  result->data = boxList(m, {}, "empty");
  Buffer& out = resultBuffer(m, result, "cannot initialize native NDArray<Double> result");
  out.sumValid = true;
  for (long long i = 0; i < rows; ++i)
    for (long long j = 0; j < columns; ++j) {
      std::vector<double> terms;
      for (long long p = 0; p < inner; ++p)
        terms.push_back(x->values[size_t(i * inner + p)] * y->values[size_t(p * columns + j)]);
      out.values.push_back(orderedSum(terms));
      out.sum += out.values.back();
    }
  return result;
}

// ---- Element access.

bool within(long long index, std::size_t count) { return index >= 0 && U(index) < count; }
void checkIndex(bool inside) {
  if (!inside) raise("IndexException", "Index out of bounds");
}
std::size_t wrapIndex(long long index, long long extent) {
  if (index < 0) index = (long long)(U(index) + U(extent));
  checkIndex(index >= 0 && index < extent);
  return static_cast<std::size_t>(index);
}

Ref getFlat(Model& m, Ref array, long long index) {
  checkIndex(array != nullptr);
  if (const Buffer* buffer = bufferOf(m, array))
    return checkIndex(within(index, buffer->count)), newBox(m, "Double", buffer->values[size_t(index)]);
  checkIndex(array->data != nullptr && within(index, lengthOf(array->data)));
  if (array->data->packed == 0) return array->data->items[size_t(index)];
  return elementBox(m, array->data, size_t(index), isFloatingKind(array->data->packed) ? "Double" : "Int");
}

void storeInBuffer(Buffer& buffer, long long index, double value) {
  if (buffer.sumValid) buffer.sum = (value - buffer.values[size_t(index)]) + buffer.sum;
  buffer.values[size_t(index)] = value;
}

// The shared empty list is never written to.
Ref writableData(Model& m, Ref array) {
  if (array->data != nullptr && array->data->shared == "empty") array->data = newList(m);
  return array->data;
}

void setFlat(Model& m, Ref array, long long index, Ref value) {
  checkIndex(array != nullptr);
  if (Buffer* buffer = bufferOf(m, array)) {
    checkIndex(within(index, buffer->count));
    if (value == nullptr || value->kind != Kind::Box) raise("TypeError", "NDArray<Double> expects numeric values");
    return storeInBuffer(*buffer, index, doubleOf(value));
  }
  checkIndex(writableData(m, array) != nullptr);
  materialize(m, array->data);
  std::vector<Ref>& items = array->data->items;
  const long long need = std::max(array->size, (long long)(U(index) + 1));
  if (need > static_cast<long long>(items.size())) items.resize(size_t(need), nullptr);
  checkIndex(within(index, items.size()));
  items[size_t(index)] = value;
}

double readFlat(Model& m, Ref array, long long index) {
  if (const Buffer* buffer = readyBuffer(m, array))
    return checkIndex(within(index, buffer->count)), buffer->values[size_t(index)];
  return doubleOf(getFlat(m, array, index));
}
void writeFlat(Model& m, Ref array, long long index, double value) {
  Buffer* buffer = readyBuffer(m, array);
  if (buffer == nullptr) return setFlat(m, array, index, newBox(m, "Double", value));
  checkIndex(within(index, buffer->count));
  storeInBuffer(*buffer, index, value);
}

long long flat1D(Ref array, long long index, const char* message) {
  checkIndex(array != nullptr);
  if (array->ndim != 1) raise("ValueException", message);
  return (long long)wrapIndex(index, array->size);
}
long long flat2D(Ref array, long long row, long long column) {
  checkIndex(array != nullptr);
  if (array->ndim != 2) raise("ValueException", "2D indexing used on non-2D NDArray");
  if (array->hasMetadata && !array->prefixValid) refreshPrefix(array);
  std::vector<long long> shape = extentsOf(array);
  if (array->hasMetadata) shape.assign({array->dim0, array->dim1});
  if (shape.size() < 2 || (array->hasMetadata && !array->prefixValid)) raise("ValueException", "Invalid NDArray shape");
  const U first = wrapIndex(row, shape[0]);
  return (long long)(first * U(shape[1]) + wrapIndex(column, shape[1]));
}
double get1D(Model& m, Ref array, long long index) {
  return readFlat(m, array, flat1D(array, index, "1D indexing used on non-1D NDArray"));
}
void set1D(Model& m, Ref array, long long index, double value) {
  writeFlat(m, array, flat1D(array, index, "1D set used on non-1D NDArray"), value);
}
double get2D(Model& m, Ref array, long long row, long long column) {
  return readFlat(m, array, flat2D(array, row, column));
}
void set2D(Model& m, Ref array, long long row, long long column, double value) {
  writeFlat(m, array, flat2D(array, row, column), value);
}

// ---- Construction and random numbers.

// Rank, size, shape and strides; up to two dimensions the lists are shared. With metadata the extents are remembered.
void describe(Model& m, Ref array, const std::vector<long long>& shape) {
  std::vector<long long> strides(shape.size(), 1);
  string name;
  array->size = 1;
  for (std::size_t i = shape.size(); i-- > 0; array->size *= shape[i]) {
    strides[i] = array->size;
    name += " " + std::to_string(shape[i]);
  }
  const bool isShared = shape.size() <= 2;
  array->ndim = (long long)shape.size();
  array->shape = boxList(m, shape, isShared ? "shape" + name : "");
  array->strides = boxList(m, strides, shape.size() == 1 ? "stride" : isShared ? "strides" + name : "");
  if (array->hasMetadata) refreshPrefix(array);
}

// A new one-dimensional array with a ready buffer whose values and sum are still to come.
Ref newBufferArray(Model& m, const char* type, long long count) {
  if (count <= 0) raise("ValueException", kBadExtent);
  if (type == nullptr) throw std::logic_error("no type name");
  if (!m.available()) raise("TypeError", "cannot allocate native NDArray<Double>");
  Ref array = m.world.make(Kind::Array, type);
  array->hasMetadata = true;
  describe(m, array, {count});
  array->data = boxList(m, {}, "empty");
  if (!m.available()) raise("TypeError", kNoBuffer);
  array->buffer = Buffer{U(count), count > 32, true, true, false, 0, {}};
  return array;
}

Ref fromDoubles(Model& m, const char* type, const double* values, long long count, double total) {
  if (values == nullptr && count > 0) return nullptr;
  Ref array = newBufferArray(m, type, count);
  array->buffer->values.assign(values, values + count);
  array->buffer->sum = total;
  return array;
}

Ref random1D(Model& m, const char* type, long long length) {
  Ref array = newBufferArray(m, type, length);
  array->buffer->random = true;
  return array;
}

// Bare memory with the sum behind the values.
Ref randomBuffer(Model& m, long long count) {
  if (count <= 0) raise("ValueException", kBadExtent);
  if (!m.available()) raise("OutOfMemoryError", "Cannot allocate NDArray<Double> random buffer");
  Ref memory = m.world.make(Kind::Other, "");
  memory->buffer = Buffer{U(count), false, true, true, true, 0, {}};
  return memory;
}

void init1D(Model& m, Ref array, long long length, int flag) {
  const bool zero = flag != 0;
  if (array == nullptr) return;
  if (length <= 0) raise("ValueException", kBadExtent);
  array->hasMetadata |= usesBuffer(array);
  describe(m, array, {length});
  if (!usesBuffer(array)) {
    const string type = elementTypeOf(array->type);
    array->data = newList(m);
    for (long long i = 0; zero && i < length; ++i)
      array->data->items.push_back(newBox(m, isNumber(type) ? type : "Int", 0));
    return;
  }
  array->data = boxList(m, {}, "empty");
  Buffer* buffer = bufferOf(m, array, false, zero);
  if (buffer == nullptr) raise("TypeError", kNoBuffer);
  if (zero) buffer->values.assign(size_t(length), 0.0);
  buffer->sum = 0;
  buffer->sumValid = zero;
}

void initFilled(Model& m, Ref array, Ref shapeList, Ref fill) {
  if (array == nullptr) return;
  if (shapeList == nullptr || lengthOf(shapeList) == 0)
    raise("ValueException", "shape must contain at least one dimension");
  const std::vector<long long> shape = extentsOf(shapeList);
  long long count = 1;
  for (long long extent : shape)
    if (extent <= 0) raise("ValueException", kBadExtent);
  for (long long extent : shape) {
    if (extent > kMaxCount || kMaxCount / extent < count) raise("ValueException", kTooLarge);
    count *= extent;
  }
  array->hasMetadata = true;
  describe(m, array, shape);
  if (usesBuffer(array)) {
    array->data = boxList(m, {}, "empty");
    Buffer& buffer = resultBuffer(m, array, kNoBuffer);
    buffer.values.assign(size_t(count), doubleOf(fill));
    buffer.sum = static_cast<double>(count) * doubleOf(fill);
    buffer.sumValid = true;
    return;
  }
  const string type = elementTypeOf(array->type);
  Ref list = isNumber(type) ? newPackedList(m, type) : nullptr;
  if (list == nullptr) list = newList(m, std::vector<Ref>(size_t(count), fill));
  if (list->packed != 0)
    list->elements.assign(size_t(count), packedNumber(list->packed, doubleOf(fill), integerOf(fill)));
  array->data = list;
}

void fillRandomList(Model& m, Ref list, long long signedCount) {
  if (list == nullptr) return;
  if (signedCount < 0) raise("ValueException", "random fill count must be non-negative");
  if (list->packed != 0 && !isFloatingKind(list->packed))
    raise("TypeError", "random fill requires a floating-point list");
  const std::size_t count = size_t(signedCount);
  const string boxType = elementTypeOf(list->type) == "Float" ? "Float" : "Double";
  if (list->packed != 0) list->elements.resize(std::max(count, lengthOf(list)));
  if (list->packed == 0) list->items.resize(std::max(count, lengthOf(list)));
  for (std::size_t i = 0; i < count; ++i) {
    const double value = static_cast<double>(nextFastRandomU64() >> 11) * 0x1p-53;
    if (list->packed == 0) list->items[i] = newBox(m, boxType, value);
    if (list->packed != 0) list->elements[i] = packedNumber(list->packed, value, 0);
  }
}

void fillRandom(Model& m, Ref array) {
  if (array == nullptr) return;
  Buffer* buffer = bufferOf(m, array, false, false);
  if (buffer == nullptr) return fillRandomList(m, writableData(m, array), array->size);
  buffer->sumValid = buffer->random = true;
}

}  // namespace
}  // namespace model

std::vector<Operation> arrayOperations() {
  using namespace model;
  // clang-format off
  return {
      operation("sumNdArray", sum), operation("sumNdArrayAsDouble", sumAsDouble),
      operation("sumNdArrayAsFloat", sumAsFloat), operation("sortNdArray", sort), operation("sortNdArray1D", sort1D),
      operation("multiplyNdArrays", matmul), operation("getNdArrayFlat", getFlat),
      operation("setNdArrayFlat", setFlat), operation("getNdArrayDouble1D", get1D),
      operation("getNdArrayDouble2D", get2D), operation("setNdArrayDouble1D", set1D),
      operation("setNdArrayDouble2D", set2D), operation("initNdArray1D", init1D),
      operation("initNdArrayFilled", initFilled), operation("makeNdArrayFromDoubles", fromDoubles),
      operation("makeRandomNdArray1D", random1D), operation("makeRandomDoubleBuffer", randomBuffer),
      operation("fillNdArrayRandom", fillRandom), operation("fillRandomList", fillRandomList)};
  // clang-format on
}
