// The host runtime's own records as the module reads and writes them. The runtime allocates and owns every one of
// them; fields stand in the runtime's declaration order. Those with inline storage are never copied or moved: their
// `data` pointers may refer into the same record.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <new>
#include <string>

extern "C" void* Vesk_gcAlloc(unsigned long bytes);
extern "C" void* Vesk_gcAllocAtomic(unsigned long bytes);

// A reference to an interned type name, or none. Visible across library boundaries: the empty string that stands for
// "no name" is one object per process, whichever library asks first.
class __attribute__((visibility("default"))) RuntimeTypeName {
 public:
  RuntimeTypeName() = default;
  explicit RuntimeTypeName(const std::string* interned) : name_(interned) {}

  bool holdsName() const { return name_ != nullptr; }
  // The name, or the process-wide empty string. The reference outlives every record.
  const std::string& get() const {
    if (name_ != nullptr) return *name_;
    static const std::string emptyValue;
    return emptyValue;
  }
  void clear() { name_ = nullptr; }

 private:
  const std::string* name_ = nullptr;
};

// The growth rule of both list stores: `start`, doubled until it holds `wanted`; `wanted` itself where doubling would
// overflow. Throws std::bad_alloc when `wanted` elements of `elementSize` bytes have no 64-bit byte count.
inline unsigned long grownListCapacity(unsigned long start, unsigned long wanted, unsigned long elementSize) {
  if (elementSize != 0 && wanted > std::numeric_limits<unsigned long>::max() / elementSize) throw std::bad_alloc();
  unsigned long capacity = start;
  while (capacity < wanted) {
    if (capacity > std::numeric_limits<unsigned long>::max() / 2) return wanted;
    capacity *= 2;
  }
  if (elementSize != 0 && capacity > std::numeric_limits<unsigned long>::max() / elementSize) return wanted;
  return capacity;
}

// Packed elements of a primitive list; element i lies at data + i * elementSize.
struct SmallPrimitiveBuffer {
  static constexpr unsigned long kInlineBytes = 128;

  alignas(8) unsigned char inlineBytes[kInlineBytes];
  unsigned char* data;
  unsigned long size;
  unsigned long capacity;
  unsigned long elementSize;

  SmallPrimitiveBuffer() = default;
  SmallPrimitiveBuffer(const SmallPrimitiveBuffer&) = delete;
  SmallPrimitiveBuffer& operator=(const SmallPrimitiveBuffer&) = delete;

  // Makes `capacity` at least n elements; `size` stays. New storage is not cleared. May allocate: the list is rooted
  // and the caller holds the list lock. Throws std::bad_alloc.
  void reserve(unsigned long n) {
    if (capacity >= n) return;
    const unsigned long grown = grownListCapacity(capacity == 0 ? 1 : capacity, n, elementSize);
    auto* storage = static_cast<unsigned char*>(Vesk_gcAllocAtomic(grown * elementSize));
    if (storage == nullptr) throw std::bad_alloc();
    if (size != 0) std::memcpy(storage, data, size * elementSize);
    data = storage;
    capacity = grown;
  }
};

// Item pointers of an object list; null items are allowed.
struct SmallObjectVector {
  static constexpr unsigned long kInlineSlots = 4;

  void* inlineSlots[kInlineSlots];
  void** data;
  unsigned long size;
  unsigned long capacity;

  SmallObjectVector() = default;
  SmallObjectVector(const SmallObjectVector&) = delete;
  SmallObjectVector& operator=(const SmallObjectVector&) = delete;

  // Makes `capacity` at least n slots, new ones null; `size` stays. May allocate: the list is rooted and the caller
  // holds the list lock. Throws std::bad_alloc.
  void reserve(unsigned long n) {
    if (capacity >= n) return;
    const unsigned long grown = grownListCapacity(capacity == 0 ? kInlineSlots : capacity, n, sizeof(void*));
    auto** storage = static_cast<void**>(Vesk_gcAlloc(grown * sizeof(void*)));
    if (storage == nullptr) throw std::bad_alloc();
    if (size != 0) std::memcpy(storage, data, size * sizeof(void*));
    std::memset(storage + size, 0, (grown - size) * sizeof(void*));
    data = storage;
    capacity = grown;
  }
};

// The storage behind an ArrayList: an object list (primitiveKind 0, items in `objects`) or a primitive list (kinds 1
// to 11, elements in `primitives`). With `needsLock` set, every access happens under `mutex`, which is one per list.
struct ListData {
  unsigned char needsLock;
  unsigned char primitiveKind;
  RuntimeTypeName elementTypeName;
  SmallPrimitiveBuffer primitives;
  SmallObjectVector objects;
  pthread_mutex_t* mutex;
  // Element counters of storage forms that only the runtime uses; zero whenever the module is called.
  unsigned long legacyIntegerCount;
  unsigned long legacyDoubleCount;

  ListData() = default;
  ListData(const ListData&) = delete;
  ListData& operator=(const ListData&) = delete;
};

// The native mirror of an array's fields. For an object that has one, the field operations answer from it.
struct NdArrayMetadata {
  long long ndim;
  long long size;
  void* shape;
  void* strides;
  void* data;
  long long dim0;
  long long dim1;
  unsigned char prefixValid;
};

// The native values of an NDArray<Double>: up to 32 inline, more in collector memory that is not scanned.
struct NdArrayDoubleStorage {
  static constexpr unsigned long kInlineCapacity = 32;

  double inlineValues[kInlineCapacity];
  double* heapValues;
  unsigned long count;
  double cachedSum;
  unsigned char heapAllocated;
  unsigned char ready;
  unsigned char sumValid;

  NdArrayDoubleStorage() = default;
  NdArrayDoubleStorage(const NdArrayDoubleStorage&) = delete;
  NdArrayDoubleStorage& operator=(const NdArrayDoubleStorage&) = delete;
};

// The record of one language object. Its address is the object pointer itself.
struct ObjectInstance {
  std::uint64_t header;  // the runtime's own; carries its object magic
  unsigned char finalizerRegistered;
  unsigned char doubleTypeChecked;
  unsigned char isDoubleElementArray;
  RuntimeTypeName typeName;
  NdArrayMetadata* metadata;
  void* finalizer;  // null for classes without one
};

static_assert(offsetof(ListData, needsLock) < offsetof(ListData, primitiveKind) &&
              offsetof(ListData, primitiveKind) < offsetof(ListData, elementTypeName) &&
              offsetof(ListData, elementTypeName) < offsetof(ListData, primitives) &&
              offsetof(ListData, primitives) < offsetof(ListData, objects) &&
              offsetof(ListData, objects) < offsetof(ListData, mutex));
static_assert(offsetof(ObjectInstance, finalizerRegistered) < offsetof(ObjectInstance, doubleTypeChecked) &&
              offsetof(ObjectInstance, doubleTypeChecked) < offsetof(ObjectInstance, isDoubleElementArray) &&
              offsetof(ObjectInstance, isDoubleElementArray) < offsetof(ObjectInstance, typeName) &&
              offsetof(ObjectInstance, typeName) < offsetof(ObjectInstance, metadata) &&
              offsetof(ObjectInstance, metadata) < offsetof(ObjectInstance, finalizer));
static_assert(offsetof(NdArrayMetadata, prefixValid) == 7 * 8);
static_assert(offsetof(NdArrayDoubleStorage, heapValues) == 256 && offsetof(NdArrayDoubleStorage, sumValid) == 282);
