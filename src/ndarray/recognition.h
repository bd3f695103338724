// Which objects and type names are arrays, and which arrays keep their values as native doubles.
#pragma once

#include <atomic>
#include <string>

#include "runtime/hostOperations.h"

// Whether a full type name is the array class: "NDArray" or "vesk.math.NDArray" with or without arguments, or any name
// in the generic-instance form "NDArray__T_...".
bool isRuntimeNdArrayTypeName(const std::string& name);

// Whether the pointer is a live array object; null and foreign memory are not. Throws std::logic_error when the host
// has no type name for an object.
bool isRuntimeNdArrayObject(void* object);
// For callers that hold the object's record (null for a foreign pointer) already.
bool isRuntimeNdArrayObject(void* object, ObjectInstance* instance);

// The same answer for a record, from its type name alone; null is no array. (Exported for the runtime.)
bool isRuntimeNdArrayInstance(const ObjectInstance* instance);

// The answer to the question below as it stands in a record, and the look at the names that finds and records it.
// Several threads may find and write the same answer; the flag that says there is one is written last.
inline bool hasElementTypeAnswer(ObjectInstance& instance) {
  return std::atomic_ref(instance.doubleTypeChecked).load(std::memory_order_acquire) != 0;
}
inline bool elementTypeAnswer(ObjectInstance& instance) {
  return std::atomic_ref(instance.isDoubleElementArray).load(std::memory_order_relaxed) != 0;
}
bool findElementTypeAnswer(void* object, ObjectInstance& instance);

// Whether the object is an array whose first generic argument is "Double". The names are looked at once per array;
// the answer then stands in its record, where other threads may read it. The pointer may be null or foreign; the
// second form is for callers that hold its record already. Never allocate collector memory.
bool ndArrayUsesNativeDoubleBuffer(void* object);
inline bool ndArrayUsesNativeDoubleBuffer(void* object, ObjectInstance* instance) {
  if (instance == nullptr) return false;
  return hasElementTypeAnswer(*instance) ? elementTypeAnswer(*instance) : findElementTypeAnswer(object, *instance);
}

// The record behind a pointer that may be null or foreign; null for those.
inline ObjectInstance* instanceOf(void* object) {
  return object != nullptr && hasObjectMagic(object) ? getObject(object) : nullptr;
}

// Records the element-type answer of an array, for callers that know it without looking at the names.
inline void setElementTypeAnswer(ObjectInstance& instance, bool isDouble) {
  std::atomic_ref(instance.isDoubleElementArray).store(isDouble ? 1 : 0, std::memory_order_relaxed);
  std::atomic_ref(instance.doubleTypeChecked).store(1, std::memory_order_release);
}

// Hands an array's element-type answer on to a new array of the same type name, sparing it the name test. Both are
// records of live objects or null; nothing happens when there is no answer yet.
inline void copyElementTypeAnswer(ObjectInstance* to, ObjectInstance* from) {
  if (to == nullptr || from == nullptr || !hasElementTypeAnswer(*from)) return;
  setElementTypeAnswer(*to, elementTypeAnswer(*from));
}

// The object's full type name as a string. Throws std::logic_error when the host has none.
std::string runtimeTypeNameOf(void* object);
