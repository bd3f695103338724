#include "ndarray/sharedShapes.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <new>
#include <unordered_map>

#include "ndarray/shapes.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/rootSlot.h"

pthread_mutex_t gNdArraySharedCacheMutex = PTHREAD_MUTEX_INITIALIZER;

namespace {

constexpr unsigned long kSmallExtents = 256;
constexpr unsigned long kMaxPairs = 2048;
constexpr unsigned long kMaxPairedExtent = 0xFFFFFFFF;

template <class Value>
using SharedMap = std::unordered_map<unsigned long, Value, std::hash<unsigned long>, std::equal_to<unsigned long>,
                                     VeskGcAllocator<std::pair<const unsigned long, Value>>>;

// Holds one map in place for the life of the process. At exit the map is emptied, which only clears its bucket array,
// but never destroyed: natives that still run find a map that works. While one of them holds the cache, not even that.
template <class Map>
class LazyStaticContainer {
 public:
  LazyStaticContainer() : map() {}
  ~LazyStaticContainer() {
    if (pthread_mutex_trylock(&gNdArraySharedCacheMutex) != 0) return;
    map.clear();
    pthread_mutex_unlock(&gNdArraySharedCacheMutex);
  }
  LazyStaticContainer(const LazyStaticContainer&) = delete;
  LazyStaticContainer& operator=(const LazyStaticContainer&) = delete;

  // The stored value, or null. Caller holds the cache mutex.
  typename Map::mapped_type* find(unsigned long key) {
    const auto entry = map.find(key);
    return entry == map.end() ? nullptr : &entry->second;
  }
  // Stores the value of an absent key. May allocate: what it holds is rooted. Caller holds the cache mutex.
  void insert(unsigned long key, const typename Map::mapped_type& value) {
    // The table grows on its own before the node is made, since nothing would keep a node alive meanwhile.
    if (map.bucket_count() == 1 || map.size() + 1 > map.bucket_count()) {
      map.rehash(std::max<std::size_t>(13, 2 * map.bucket_count()));
    }
    map.emplace(key, value);
  }
  unsigned long size() const { return map.size(); }

 private:
  union {
    Map map;
  };
};

// The module's only dynamic initialisers, and the order matters: the maps are emptied the other way round.
LazyStaticContainer<SharedMap<void*>> gNdArraySharedUInts;
LazyStaticContainer<SharedMap<void*>> gNdArraySharedShape1DLists;
LazyStaticContainer<SharedMap<NdArraySharedShape2D>> gNdArraySharedShape2DLists;

// Written once each, under the mutex, when the object is complete; read without it.
constinit std::atomic<void*> gNdArraySharedEmptyList{nullptr};
constinit std::atomic<void*> gNdArraySharedStride1List{nullptr};
constinit std::atomic<void*> gNdArraySharedShape1DSmall[kSmallExtents] = {};

// The pair that this thread obtained last.
constinit thread_local NdArraySharedShape2D gRecent{nullptr, nullptr};
constinit thread_local unsigned long gRecentKey = 0;

// The published list, made by `make` under the cache mutex when there is none.
template <class Make>
void* publishedList(std::atomic<void*>& global, Make make) {
  if (void* list = global.load(std::memory_order_acquire)) return list;
  const MutexLock lock(&gNdArraySharedCacheMutex);
  if (void* list = global.load(std::memory_order_relaxed)) return list;
  void* list = make();
  global.store(list, std::memory_order_release);
  return list;
}

// A fresh list of the shared box of the value. Caller holds the cache mutex.
void* uIntListLocked(unsigned long value) {
  void* box = sharedUIntObjectLocked(value);
  return makeRuntimeArrayListOfItems(&box, 1);
}

void* largeShape1DList(unsigned long extent) {
  RootSlot list;
  const MutexLock lock(&gNdArraySharedCacheMutex);
  if (void** known = gNdArraySharedShape1DLists.find(extent)) return *known;
  list.set(uIntListLocked(extent));
  gNdArraySharedShape1DLists.insert(extent, list.get());
  return list.get();
}

// The pair of lists, from the map or new; a new one is kept in the map while there is room.
NdArraySharedShape2D shape2DLists(unsigned long rows, unsigned long cols, unsigned long key) {
  RootSlot shape;
  RootSlot strides;
  const MutexLock lock(&gNdArraySharedCacheMutex);
  if (const NdArraySharedShape2D* known = gNdArraySharedShape2DLists.find(key)) return *known;
  void* const boxes[] = {sharedUIntObjectLocked(rows), sharedUIntObjectLocked(cols), sharedUIntObjectLocked(cols),
                         sharedUIntObjectLocked(1)};
  shape.set(makeRuntimeArrayListOfItems(boxes, 2));
  strides.set(makeRuntimeArrayListOfItems(boxes + 2, 2));
  const NdArraySharedShape2D pair{shape.get(), strides.get()};
  if (gNdArraySharedShape2DLists.size() < kMaxPairs) gNdArraySharedShape2DLists.insert(key, pair);
  return pair;
}

NdArraySharedShape2D recentShape2DLists(unsigned long rows, unsigned long cols) {
  const unsigned long key = rows << 32 | cols;
  if (gRecent.shapeList == nullptr || gRecentKey != key) {
    gRecent = shape2DLists(rows, cols, key);
    gRecentKey = key;
  }
  return gRecent;
}

}  // namespace

void* sharedUIntObjectLocked(unsigned long value) {
  if (void** known = gNdArraySharedUInts.find(value)) return *known;
  const RootSlot box(Vesk_allocObject("UInt"));
  if (box.get() == nullptr) throw std::bad_alloc();
  Vesk_setField_i64(box.get(), "_value", static_cast<long long>(value));
  gNdArraySharedUInts.insert(value, box.get());
  return box.get();
}

void* makeRuntimeArrayListOfItems(void* const* items, unsigned long count) {
  const RootSlot list(Vesk_allocObject("ArrayList"));
  if (list.get() == nullptr) throw std::bad_alloc();
  ListData& data = *getListData(list.get());
  const ListDataLock lock(data);
  resetObjectItems(data, count);
  std::copy_n(items, count, data.objects.data);
  return list.get();
}

void* makeRuntimeArrayListWithItems(const std::vector<void*, VeskGcAllocator<void*>>& items) {
  const std::vector<void*> plain(items.begin(), items.end());  // nothing keeps the items' own buffer from a collection
  return makeRuntimeArrayListOfItems(plain.data(), plain.size());
}

void* makeRuntimeUIntArrayList(const std::vector<unsigned long>& values) {
  std::vector<void*> boxes;  // plain memory will do: the cache keeps the boxes alive
  boxes.reserve(values.size());
  for (const unsigned long value : values) {
    const MutexLock lock(&gNdArraySharedCacheMutex);
    boxes.push_back(sharedUIntObjectLocked(value));
  }
  return makeRuntimeArrayListOfItems(boxes.data(), boxes.size());
}

void* writableNdArrayDataList(void* array) {
  void* data = Vesk_getField_ptr(array, "_data");
  if (data == nullptr || data != gNdArraySharedEmptyList.load(std::memory_order_acquire)) return data;
  const RootSlot own(makeRuntimeArrayListOfItems(nullptr, 0));
  Vesk_setField_ptr(array, "_data", own.get());
  return own.get();
}

void* sharedEmptyArrayListObject() {
  return publishedList(gNdArraySharedEmptyList, [] { return makeRuntimeArrayListOfItems(nullptr, 0); });
}

void* sharedStride1ArrayListObject() {
  return publishedList(gNdArraySharedStride1List, [] { return uIntListLocked(1); });
}

void* sharedShape1DArrayListObject(unsigned long extent) {
  if (extent >= kSmallExtents) return largeShape1DList(extent);
  return publishedList(gNdArraySharedShape1DSmall[extent], [extent] { return uIntListLocked(extent); });
}

void sharedNdArrayShapeMetadata(const std::vector<unsigned long>& dims, void*& shape, void*& strides) {
  if (dims.size() == 1) {
    shape = sharedShape1DArrayListObject(dims[0]);
    strides = sharedStride1ArrayListObject();
  } else if (dims.size() == 2 && dims[0] <= kMaxPairedExtent && dims[1] <= kMaxPairedExtent) {
    const NdArraySharedShape2D pair = recentShape2DLists(dims[0], dims[1]);
    shape = pair.shapeList;
    strides = pair.stridesList;
  } else {
    const RootSlot shapeSlot(makeRuntimeUIntArrayList(dims));
    strides = makeRuntimeUIntArrayList(rowMajorStridesForShape(dims));
    shape = shapeSlot.get();
  }
}
