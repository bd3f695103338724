#include "ndarray/numericProfile.h"

#include <algorithm>

#include "ndarray/recognition.h"
#include "runtime/elementKinds.h"
#include "runtime/listStorage.h"

namespace {

NdArrayNumericProfile profileOfItem(void* item) {
  if (!hasObjectMagic(item)) return {NdArrayNumericKind::None, "Double"};
  std::string name = shortTypeNameLocal(runtimeTypeNameOf(item));
  if (name == "Boolean") return {NdArrayNumericKind::Boolean, std::move(name)};
  if (isIntegerScalarShortType(name)) return {NdArrayNumericKind::Integer, std::move(name)};
  if (name == "Float" || name == "Double") return {NdArrayNumericKind::Floating, std::move(name)};
  return {NdArrayNumericKind::None, "Double"};
}

NdArrayNumericProfile profileOfItems(const SmallObjectVector& items) {
  void** const end = items.data + items.size;
  void** const first = std::find_if(items.data, end, [](void* item) { return item != nullptr; });
  if (first == end) return {NdArrayNumericKind::Floating, "Double"};
  return profileOfItem(*first);
}

}  // namespace

NdArrayNumericProfile detectNdArrayNumericProfile(const ListData& list) {
  if (list.primitiveKind == kBooleanKind) return {NdArrayNumericKind::Boolean, "Boolean"};
  if (isFloatingElementKind(list.primitiveKind)) {
    return {NdArrayNumericKind::Floating, listElementTypeName(list, "Double")};
  }
  if (isIntegralElementKind(list.primitiveKind)) {
    return {NdArrayNumericKind::Integer, listElementTypeName(list, "Int")};
  }
  return profileOfItems(list.objects);
}

bool isIntegerScalarShortType(const std::string& name) {
  return std::find(kElementKindNames + 1, kElementKindNames + 9, name) != kElementKindNames + 9;
}

long long ndArrayValueToInteger(void* item, NdArrayNumericKind kind) {
  if (item == nullptr) return 0;
  switch (kind) {
    case NdArrayNumericKind::Boolean:
      return Vesk_getField_i1(item, "_value") != 0 ? 1 : 0;
    case NdArrayNumericKind::Integer:
      return Vesk_getField_i64(item, "_value");
    case NdArrayNumericKind::Floating:
      return doubleToInteger(Vesk_getField_double(item, "_value"));
    default:
      return 0;
  }
}

double ndArrayValueToDouble(void* item, NdArrayNumericKind kind) {
  if (item != nullptr && kind == NdArrayNumericKind::Floating) return Vesk_getField_double(item, "_value");
  return static_cast<double>(ndArrayValueToInteger(item, kind));
}
