#include "support/snapshot.h"

#include <cmath>
#include <mutex>
#include <sstream>

#include "runtime/elementKinds.h"

namespace {

// Which objects turned out to be the shared ones. Never destroyed: threads may look while the process exits.
struct SharedObjects {
  std::mutex mutex;
  std::map<std::string, void*> objects;
};
SharedObjects& sharedObjects() {
  static auto& objects = *new SharedObjects;
  return objects;
}

// True when this object is the one that was shared under the name before, or the first.
bool isTheShared(const std::string& name, void* object) {
  const std::lock_guard<std::mutex> lock(sharedObjects().mutex);
  return sharedObjects().objects.emplace(name, object).first->second == object;
}

Number elementOf(const ListData& list, unsigned long index) {
  const unsigned char* element = list.primitives.data + index * list.primitives.elementSize;
  return visitElementKind(
      list.primitiveKind,
      [&](auto kind) -> Number {
        if constexpr (kind.kIsFloating || kind.kIsBoolean)
          return kind.load(element);
        else
          return static_cast<long long>(kind.load(element));
      },
      [] { return Number{0}; });
}

Buffer seeBuffer(const NdArrayDoubleStorage& storage) {
  Buffer buffer{storage.count,
                storage.heapAllocated != 0,
                storage.ready != 0,
                storage.sumValid != 0,
                false,
                storage.cachedSum,
                {}};
  const double* values = buffer.heap ? storage.heapValues : storage.inlineValues;
  buffer.values.assign(values, values + storage.count);
  return buffer;
}

}  // namespace

bool sameNumber(Number x, Number y) {
  return (x == y && std::signbit(x) == std::signbit(y)) || (std::isnan(x) && std::isnan(y));
}

bool areUniform(const std::vector<double>& values, double sum) {
  double expected = 0;
  std::size_t i = 0;
  for (; i + 4 <= values.size(); i += 4) expected += values[i] + values[i + 1] + values[i + 2] + values[i + 3];
  for (; i < values.size(); ++i) expected += values[i];
  for (double value : values)
    if (!(value >= 0 && value < 1) || std::ldexp(value, 53) != std::floor(std::ldexp(value, 53))) return false;
  return sameDouble(sum, expected);
}

Ref World::make(Node::Kind kind, const std::string& type) {
  Node& node = nodes_.emplace_back();
  node.kind = kind;
  node.type = type;
  return &node;
}

Ref World::see(void* object) {
  if (object == nullptr) return nullptr;
  if (const auto known = seen_.find(object); known != seen_.end()) return known->second;
  Node& node = *make(Node::Kind::Other, "");
  seen_[object] = &node;
  node.address = object;
  if (!hasObjectMagic(object)) return &node;
  ObjectInstance* instance = getObject(object);
  node.type = Vesk_objectTypeName(object);
  const std::string shortName = shortTypeName(node.type);
  if (shortName == "ArrayList") {
    node.kind = Node::Kind::List;
    const ListData& list = *getListData(object);
    node.packed = list.primitiveKind;
    node.elementName = list.elementTypeName.get();
    for (unsigned long i = 0; list.primitiveKind != 0 && i < list.primitives.size; ++i)
      node.elements.push_back(elementOf(list, i));
    for (unsigned long i = 0; list.primitiveKind == 0 && i < list.objects.size; ++i)
      node.items.push_back(see(list.objects.data[i]));
  } else if (node.type.find("Array") != std::string::npos) {
    node.kind = Node::Kind::Array;
    node.ndim = Vesk_getField_i64(object, "_ndim");
    node.size = Vesk_getField_i64(object, "_size");
    node.shape = see(Vesk_getField_ptr(object, "_shape"));
    node.strides = see(Vesk_getField_ptr(object, "_strides"));
    node.data = see(Vesk_getField_ptr(object, "_data"));
    if (const NdArrayMetadata* meta = instance->metadata; meta != nullptr) {
      node.hasMetadata = true;
      node.prefixValid = meta->prefixValid != 0;
      node.dim0 = meta->dim0;
      node.dim1 = meta->dim1;
    }
    if (const NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instance)) node.buffer = seeBuffer(*storage);
  } else if (double real = 0; extractArrayElementDouble(object, real)) {
    node.kind = Node::Kind::Box;
    node.type = shortName;
    const bool isFloating = shortName == "Float" || shortName == "Double";
    node.value = isFloating ? real : static_cast<Number>(Vesk_getField_i64(object, "_value"));
  }
  return &node;
}

template <class T>
void Comparison::same(const std::string& path, const T& expected, const T& actual) {
  bool equal = expected == actual;
  if constexpr (std::is_same_v<T, Number> || std::is_same_v<T, double>) equal = sameNumber(expected, actual);
  if (equal || !difference_.empty()) return;
  std::ostringstream text;
  text.precision(17);
  text << path << ": expected " << expected << ", found " << actual;
  difference_ = text.str();
}

void Comparison::compareIdentity(const std::string& path, const Node& expected, const Node& actual) {
  if (!expected.shared.empty()) return same(path + " is shared", isTheShared(expected.shared, actual.address), true);
  if (expected.address != nullptr) return same(path + " identity", expected.address, actual.address);
  same(path + " is new", before_.knows(actual.address), false);
  same<const Node*>(path + " is one object", reverse_.emplace(&actual, &expected).first->second, &expected);
}

void Comparison::compareBuffers(const std::string& path, const Buffer& expected, const Buffer& actual) {
  same(path + ".count", expected.count, actual.count);
  same(path + ".heap", expected.heap, actual.heap);
  same(path + ".ready", expected.ready, actual.ready);
  same(path + ".sumValid", expected.sumValid, actual.sumValid);
  if (expected.random) return same(path + " is uniform", true, areUniform(actual.values, actual.sum));
  if (expected.sumValid) same(path + ".sum", expected.sum, actual.sum);
  for (std::size_t i = 0; i < expected.values.size() && i < actual.values.size(); ++i)
    same(path + "[" + std::to_string(i) + "]", expected.values[i], actual.values[i]);
}

void Comparison::compare(const std::string& path, const Node* expected, const Node* actual) {
  same(path + " exists", expected != nullptr, actual != nullptr);
  if (expected == nullptr || actual == nullptr || !difference_.empty()) return;
  const auto [known, isFirst] = pairs_.emplace(expected, actual);
  if (!isFirst) return same(path + " is the same object", known->second, actual);
  compareIdentity(path, *expected, *actual);
  same(path + ".kind", static_cast<int>(expected->kind), static_cast<int>(actual->kind));
  if (expected->kind != Node::Kind::List) same(path + ".type", expected->type, actual->type);
  same(path + ".value", expected->value, actual->value);
  same(path + ".packed", int{expected->packed}, int{actual->packed});
  same(path + ".elementName", expected->elementName, actual->elementName);
  same(path + ".length", expected->elements.size() + expected->items.size(),
       actual->elements.size() + actual->items.size());
  for (const auto field : {&Node::ndim, &Node::size, &Node::dim0, &Node::dim1})
    same(path + ".extents", expected->*field, actual->*field);
  same(path + ".hasMetadata", expected->hasMetadata, actual->hasMetadata);
  same(path + ".prefixValid", expected->prefixValid, actual->prefixValid);
  same(path + " has a buffer", expected->buffer.has_value(), actual->buffer.has_value());
  if (!difference_.empty()) return;
  for (std::size_t i = 0; i < expected->elements.size(); ++i)
    same(path + "(" + std::to_string(i) + ")", expected->elements[i], actual->elements[i]);
  for (std::size_t i = 0; i < expected->items.size(); ++i)
    compare(path + "." + std::to_string(i), expected->items[i], actual->items[i]);
  compare(path + ".shape", expected->shape, actual->shape);
  compare(path + ".strides", expected->strides, actual->strides);
  compare(path + ".data", expected->data, actual->data);
  if (expected->buffer) compareBuffers(path + ".buffer", *expected->buffer, *actual->buffer);
}
