// Arrays shaped like an operand, for results.
#pragma once

#include <string>

#include "ndarray/doubleBuffer.h"
#include "runtime/rootSlot.h"

// A new array of the given full type name with the rank, size, shape and stride lists of `source` and a fresh data
// list of `slotCount` null items, whose storage comes back in `dataList`. The result is not rooted any more when it is
// returned: the caller puts it into its own slot before any other call. May allocate: `source` is rooted by the
// caller. Returns null, with `dataList` unchanged, when the host makes no object. Throws std::bad_alloc.
void* createNdArrayResultLike(void* source, const std::string& typeName, unsigned long slotCount, ListData*& dataList);
void* createNdArrayResultLike(void* source, const char* typeName, unsigned long slotCount, ListData*& dataList);

// Fills the metadata of a new array from `source` (rank, size, shape, strides and the cached extents); the caller sets
// `data`, which may be the source's own until then. Takes the shape list's lock of a source without metadata. Never
// allocates; throws std::system_error.
void copyNdArrayDescription(NdArrayMetadata& meta, void* source);

// Makes, in `result`, an array like `source` of the given full type name with `count` null items and a native buffer
// of `count` values not yet written, and returns the buffer. When either cannot be had, raises TypeError and returns a
// null view. `sameType` says that the name is the source's own, which spares the result its element-type test. May
// allocate: `source` is rooted by the caller, and pointers to its values are still valid afterwards.
NdArrayDoubleBufferView makeNdArrayDoubleResult(RootSlot& result, void* source, const char* typeName, bool sameType,
                                                unsigned long count);
// For callers that hold the source's record already.
NdArrayDoubleBufferView makeNdArrayDoubleResult(RootSlot& result, void* source, ObjectInstance* sourceInstance,
                                                const char* typeName, bool sameType, unsigned long count);

// The same for list results, in `result`: never null. Throws std::bad_alloc when the host makes no object.
ListData& makeNdArrayListResult(RootSlot& result, void* source, const char* typeName, unsigned long count);
