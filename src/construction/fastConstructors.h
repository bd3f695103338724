// Constructors that describe a whole array in one call: metadata, shared shape objects and, for doubles, a ready
// buffer.
#pragma once

#include "runtime/rootSlot.h"

// Makes `array` one-dimensional of the given length, zero-filled or with its elements left to the caller; nothing for
// null. Raises ValueException for lengths below 1 and TypeError when the host makes no native storage. May allocate;
// roots the array. Throws std::bad_alloc, std::system_error, std::logic_error (no type name).
void initNdArray1D(void* array, long long length, int zeroFill);

// Makes `array` an array of the extents in `shapeList` with every element equal to `fillValue` (a number box, or any
// object when the element type is not a number); nothing for a null array. Raises ValueException for a missing, empty,
// non-positive or oversized shape and TypeError when the host makes no native storage. May allocate; roots its
// arguments. Throws as above.
void initNdArrayFilled(void* array, void* shapeList, void* fillValue);

// A new one-dimensional array of the full type name over a copy of `count` doubles whose sum the caller vouches for;
// null after raising, or for null values. `values` stays alive through the caller. May allocate. Raises and throws as
// makeNdArrayDoubles1D.
void* makeNdArrayFromDoubles(const char* typeName, const double* values, long long count, double sum);

// What the two constructors of whole arrays of doubles share: in `array`, a new one-dimensional array of the full type
// name, described but not ready. Returns its storage with room for `count` values at `values`; the caller writes them,
// `cachedSum`, and sets `ready` and `sumValid`. Raises ValueException for counts below 1 and TypeError when the host
// cannot make it, and returns null. May allocate. Throws std::logic_error for a null type name, std::bad_alloc.
NdArrayDoubleStorage* makeNdArrayDoubles1D(RootSlot& array, const char* typeName, long long count, double*& values);
