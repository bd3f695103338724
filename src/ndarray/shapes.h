// Reading, comparing and computing shapes and strides.
#pragma once

#include <vector>

#include "runtime/records.h"

// Element `index` of a shape list: packed or boxed integers; 0 beyond its end and for items that are no numbers.
// Caller holds the list lock. Never allocates.
long long shapeElement(const ListData& list, unsigned long index);

// The extents of the array's shape list, outermost first; empty when it has none. Locks the shape list while reading.
// Raises nothing.
std::vector<unsigned long> snapshotNdArrayShape(void* array);

// Sets `rows` and `cols` of a two-dimensional array, from its metadata where it has one; otherwise raises a
// ValueException and returns false with both unchanged. The pointer may be foreign. Takes the shape list's lock at
// most. Never allocates.
bool snapshotNdArray2DShapeFast(void* array, long long& rows, long long& cols);
// For callers that hold the array's record (null for a foreign pointer) already.
bool snapshotNdArray2DShapeFast(void* array, ObjectInstance* instance, long long& rows, long long& cols);

// Whether both arrays have the same rank and extents. Locks both shape lists (a's first) unless they are one list or
// the metadata settles it. Raises nothing.
bool shapeEqualsNdArray(void* a, void* b);
// For callers that hold both records (null for foreign pointers) already.
bool shapeEqualsNdArray(void* a, const ObjectInstance* instanceA, void* b, const ObjectInstance* instanceB);

// Row-major strides in elements, one per extent; products wrap modulo 2^64.
std::vector<unsigned long> rowMajorStridesForShape(const std::vector<unsigned long>& extents);
