#include "support/snapshot.h"

#include <algorithm>
#include <cmath>
#include <mutex>

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

// True when this object is the one that was shared under the name before, or is now the first.
bool isTheShared(const std::string& name, void* object, bool mayBeFirst = true) {
  const std::lock_guard<std::mutex> lock(sharedObjects().mutex);
  auto& objects = sharedObjects().objects;
  return mayBeFirst ? objects.emplace(name, object).first->second == object
                    : objects.count(name) != 0 && objects[name] == object;
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
  Buffer buffer;
  std::tie(buffer.count, buffer.heap, buffer.ready) = std::tie(storage.count, storage.heapAllocated, storage.ready);
  std::tie(buffer.sumValid, buffer.sum) = std::tie(storage.sumValid, storage.cachedSum);
  const double* values = buffer.heap ? storage.heapValues : storage.inlineValues;
  buffer.values.assign(values, values + storage.count);
  return buffer;
}

// The sum of uniform doubles in [0, 1) as the random natives take it; NaN when there are others among them.
double groupedSum(const std::vector<double>& values) {
  double sum = 0;
  std::size_t i = 0;
  for (; i + 4 <= values.size(); i += 4) sum += values[i] + values[i + 1] + values[i + 2] + values[i + 3];
  for (; i < values.size(); ++i) sum += values[i];
  const auto isUniform = [](double value) { return value >= 0 && value < 1 && std::fmod(value, 0x1p-53) == 0; };
  return std::all_of(values.begin(), values.end(), isUniform) ? sum : NAN;
}

// Everything of a node but the other nodes that it refers to, to the last bit; as bytes, or to be read.
std::string contentOf(const Node& node, bool readable) {
  std::string text = node.kind == Node::Kind::List ? "" : node.type + " ";
  const auto add = [&](const char* format, auto value, std::size_t bytes = sizeof(long)) {
    if (!readable) return void(text.append(reinterpret_cast<const char*>(&value), bytes));
    char buffer[64];
    text.append(buffer, static_cast<std::size_t>(std::snprintf(buffer, sizeof buffer, format, value)));
  };
  constexpr std::size_t kNumberBytes = 10;  // the rest is padding
  const auto addNumber = [&](Number value) { add("%La ", std::isnan(value) ? Number(NAN) : value, kNumberBytes); };
  for (const long long field :
       {(long long)node.kind, (long long)node.packed, (long long)node.items.size(), node.ndim, node.size,
        (long long)node.hasMetadata, (long long)node.prefixValid, node.dim0, node.dim1})
    add("%lld ", field);
  addNumber(node.value);
  text += node.elementName + "(";
  for (Number element : node.elements) addNumber(element);
  if (!node.buffer) return text + ")";
  const Buffer& buffer = *node.buffer;
  for (const unsigned long field : {buffer.count, 0UL + buffer.heap, 0UL + buffer.ready, 0UL + buffer.sumValid})
    add(" %lu", field);
  text += ") buffer ";
  if (buffer.sumValid) addNumber(buffer.sum);
  for (double value : buffer.values) addNumber(value);
  return text;
}

// The expected node, with what nobody can know about its buffer taken over from the actual one.
Node completed(Node expected, const Node& actual) {
  if (!expected.buffer || !actual.buffer) return expected;
  if (expected.buffer->random || expected.buffer->values.empty()) expected.buffer->values = actual.buffer->values;
  if (expected.buffer->random) expected.buffer->sum = groupedSum(actual.buffer->values);
  return expected;
}

}  // namespace

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
    if (isTheShared("empty", object, false)) node.shared = "empty";
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
    node.hasMetadata = instance->metadata != nullptr;
    if (const NdArrayMetadata* meta = instance->metadata; meta != nullptr)
      std::tie(node.dim0, node.dim1, node.prefixValid) = std::tie(meta->dim0, meta->dim1, meta->prefixValid);
    if (const NdArrayDoubleStorage* storage = currentNdArrayDoubleStorage(instance)) node.buffer = seeBuffer(*storage);
    if (node.buffer && node.buffer->heap && instance->finalizerRegistered == 0) node.type += " that is never finalized";
  } else if (double real = 0; extractArrayElementDouble(object, real)) {
    node.kind = Node::Kind::Box;
    node.type = shortName;
    const bool isFloating = shortName == "Float" || shortName == "Double";
    node.value = isFloating ? real : static_cast<Number>(Vesk_getField_i64(object, "_value"));
  }
  return &node;
}

std::string contentOf(Ref root) {
  if (root == nullptr) return "null";
  std::string text = contentOf(*root, false);
  for (Ref item : root->items) text += contentOf(item);
  for (Ref part : {root->shape, root->strides, root->data}) text += contentOf(part);
  return text;
}

bool Comparison::isRightObject(const Node& expected, const Node& actual) {
  if (!expected.shared.empty()) return isTheShared(expected.shared, actual.address);
  if (expected.address != nullptr) return expected.address == actual.address;
  return !before_.knows(actual.address) && reverse_.emplace(&actual, &expected).first->second == &expected;
}

void Comparison::compare(const std::string& path, const Node* expected, const Node* actual) {
  if (expected == nullptr || actual == nullptr) {
    if (expected != actual) differ(path + (expected == nullptr ? ": expected null" : ": found null"));
    return;
  }
  const auto [known, isFirst] = pairs_.emplace(expected, actual);
  if (known->second != actual || !isRightObject(*expected, *actual)) return differ(path + " is another object");
  if (!isFirst || !difference_.empty()) return;
  const Node wanted = completed(*expected, *actual);
  if (contentOf(wanted, false) != contentOf(*actual, false))
    return differ(path + ":\n  expected " + contentOf(wanted, true) + "\n  found    " + contentOf(*actual, true));
  for (std::size_t i = 0; i < expected->items.size(); ++i)
    compare(path + "." + std::to_string(i), expected->items[i], actual->items[i]);
  compare(path + ".shape", expected->shape, actual->shape);
  compare(path + ".strides", expected->strides, actual->strides);
  compare(path + ".data", expected->data, actual->data);
}
