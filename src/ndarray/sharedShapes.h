// The process-wide cache of immutable shape objects that arrays share: boxes of extents, the empty list, shape and
// stride lists of one- and two-dimensional arrays. Objects appear on first use, are published complete, and are never
// changed or released. They are reachable from the module's static and thread-local storage, which the host scans.
//
// gNdArraySharedCacheMutex guards creation. It may be held while a new list's lock is taken, never the other way
// round: callers hold no list lock. All of these may allocate and throw std::bad_alloc or std::system_error; entries
// made before a failure stay. None raises.
#pragma once

#include <pthread.h>

#include <vector>

#include "runtime/hostOperations.h"
#include "runtime/veskGcAllocator.h"

// The shape and stride lists of one two-dimensional shape.
struct NdArraySharedShape2D {
  void* shapeList;
  void* stridesList;
};

extern pthread_mutex_t gNdArraySharedCacheMutex;

// The shared "UInt" box of the value. Caller holds gNdArraySharedCacheMutex.
void* sharedUIntObjectLocked(unsigned long value);

// A fresh list of the items in order, never cached. The items stay reachable through the caller (cached, rooted) for
// the whole call; `items` itself may be plain memory.
void* makeRuntimeArrayListOfItems(void* const* items, unsigned long count);
void* makeRuntimeArrayListWithItems(const std::vector<void*, VeskGcAllocator<void*>>& items);

// A fresh list of the shared boxes of the values. Caller does not hold the cache mutex.
void* makeRuntimeUIntArrayList(const std::vector<unsigned long>& values);

// The data list of an array whose elements are about to be written; an array that still has the shared empty list gets
// a list of its own first. Null when it has none. May allocate: the array is rooted by the caller.
void* writableNdArrayDataList(void* array);

// The shared empty list; the shared strides [1]; the shared shape [extent].
void* sharedEmptyArrayListObject();
void* sharedStride1ArrayListObject();
void* sharedShape1DArrayListObject(unsigned long extent);

// Sets the shape and stride lists of an array of these extents (one or more): shared ones for one and two dimensions,
// fresh ones above or when a second dimension does not fit the cache. The caller roots both at once.
void sharedNdArrayShapeMetadata(const std::vector<unsigned long>& dims, void*& shape, void*& strides);
