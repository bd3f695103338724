// Which objects and type names are arrays, and which arrays keep their values as native doubles.
#pragma once

#include <string>

#include "runtime/hostOperations.h"

// Whether a full type name is the array class: "NDArray" or "vesk.math.NDArray" with or without arguments, or any name
// in the generic-instance form "NDArray__T_...".
bool isRuntimeNdArrayTypeName(const std::string& name);

// Whether the pointer is a live array object; null and foreign memory are not. Throws std::logic_error when the host
// has no type name for an object.
bool isRuntimeNdArrayObject(void* object);

// The same answer for a record, from its type name alone; null is no array. (Exported for the runtime.)
bool isRuntimeNdArrayInstance(const ObjectInstance* instance);

// Whether the object is an array whose first generic argument is "Double". The names are looked at once per array;
// the answer then stands in its record, where other threads may read it. The pointer may be null or foreign; the
// second form is for callers that hold its record already. Never allocate collector memory.
bool ndArrayUsesNativeDoubleBuffer(void* object);
bool ndArrayUsesNativeDoubleBuffer(void* object, ObjectInstance* instance);

// The record behind a pointer that may be null or foreign; null for those.
ObjectInstance* instanceOf(void* object);

// Records the element-type answer of an array, for callers that know it without looking at the names.
void setElementTypeAnswer(ObjectInstance& instance, bool isDouble);

// Hands an array's element-type answer on to a new array of the same type name, sparing it the name test. Both are
// records of live objects or null; nothing happens when there is no answer yet.
void copyElementTypeAnswer(ObjectInstance* to, ObjectInstance* from);

// The object's full type name as a string. Throws std::logic_error when the host has none.
std::string runtimeTypeNameOf(void* object);
