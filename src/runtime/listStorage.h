// Reading packed lists, turning them into boxes, and making object lists. Callers check indices against the logical
// size and hold the list lock; nothing here does.
#pragma once

#include "runtime/elementKinds.h"
#include "runtime/records.h"

// The number of elements of the list's current representation. Caller holds the list lock.
inline unsigned long listLogicalSize(const ListData& list) {
  return list.primitiveKind != kObjectListKind ? list.primitives.size : list.objects.size;
}

// Where element `index` of a primitive list lies.
inline unsigned char* primitiveElementAt(const ListData& list, unsigned long index) {
  return list.primitives.data + index * list.primitives.elementSize;
}

// Element `index` of a primitive list as a signed 64-bit integer; 0 for any other kind of list and where the list's
// element width is too small for its kind. Caller holds the list lock; no bounds check.
inline long long primitiveListReadI64Runtime(const ListData& list, unsigned long index) {
  return visitElementKind(
      list.primitiveKind,
      [&](auto kind) -> long long {
        if (list.primitives.elementSize < kind.kWidth) return 0;
        return kind.toInteger(kind.load(primitiveElementAt(list, index)));
      },
      []() -> long long { return 0; });
}

// The same element as a double: floats widen exactly, integers convert from their signed 64-bit value.
inline double primitiveListReadF64Runtime(const ListData& list, unsigned long index) {
  return visitElementKind(
      list.primitiveKind,
      [&](auto kind) -> double {
        if (list.primitives.elementSize < kind.kWidth) return 0.0;
        return kind.toDouble(kind.load(primitiveElementAt(list, index)));
      },
      []() -> double { return 0.0; });
}

// The name under which values of this primitive list are boxed: the list's own, or `unnamed` when it holds none.
const std::string& listElementTypeName(const ListData& list, const std::string& unnamed);

// A new box for element `index` of a primitive list: a Boolean box for kind 11, a box of the named type otherwise;
// null for any other kind of list. May allocate. Caller holds the list lock and keeps the list rooted.
void* boxPrimitiveElement(const ListData& list, unsigned long index, const std::string& typeName);

// Turns a primitive list, in place and for good, into an object list of boxes with the same values; an object list
// stays as it is. Boxes are of the list's element type name, "Int" when it has none. May allocate. Caller holds the
// list lock and keeps the list rooted. Throws std::bad_alloc; the primitive elements are then still in force.
void materializePrimitiveI64ListRuntime(ListData& list);

// Whether the vector is not empty and every item is one and the same non-null object, which `item` then holds. `item`
// is set as soon as item 0 is not null, and left alone otherwise.
bool listItemsShareSinglePointer(const SmallObjectVector& items, void*& item);

// Makes `objects` exactly `count` null items. May allocate. Caller holds the list lock and keeps the list rooted.
void resetObjectItems(ListData& list, unsigned long count);
