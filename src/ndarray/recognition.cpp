#include "ndarray/recognition.h"

#include <stdexcept>

namespace {

bool namesArrayClass(const std::string& name) {
  const std::string canonical = normalizeTypeAliasForLookup(baseTypeWithoutGenerics(name));
  return canonical == "NDArray" || canonical == "vesk.math.NDArray";
}

bool isArrayUnderItsOrDisplayName(const std::string& name) {
  if (isRuntimeNdArrayTypeName(name)) return true;
  const std::string display = displayFullTypeName(name);
  return namesArrayClass(display.empty() ? name : display);
}

bool firstArgumentIsDouble(const std::string& name) {
  const std::string trimmed = trimRuntimeTypeName(name);
  return !trimmed.empty() && firstGenericArgShortType(trimmed) == "Double";
}

}  // namespace

bool isRuntimeNdArrayTypeName(const std::string& name) {
  return name.find("NDArray__T_") != std::string::npos || namesArrayClass(name);
}

bool isRuntimeNdArrayObject(void* object) { return isRuntimeNdArrayObject(object, instanceOf(object)); }

bool isRuntimeNdArrayObject(void* object, ObjectInstance* instance) {
  if (instance == nullptr) return false;
  if (hasElementTypeAnswer(*instance)) return true;  // only arrays ever get one
  return isArrayUnderItsOrDisplayName(runtimeTypeNameOf(object));
}

bool isRuntimeNdArrayInstance(const ObjectInstance* instance) {
  return instance != nullptr && isRuntimeNdArrayTypeName(instance->typeName.get());
}

bool ndArrayUsesNativeDoubleBuffer(void* object) { return ndArrayUsesNativeDoubleBuffer(object, instanceOf(object)); }

bool findElementTypeAnswer(void* object, ObjectInstance& instance) {
  const std::string name = runtimeTypeNameOf(object);
  if (!isArrayUnderItsOrDisplayName(name)) return false;
  const bool isDouble = firstArgumentIsDouble(name);
  setElementTypeAnswer(instance, isDouble);
  return isDouble;
}

std::string runtimeTypeNameOf(void* object) {
  const char* name = Vesk_objectTypeName(object);
  if (name == nullptr) throw std::logic_error("object without a type name");
  return name;
}
