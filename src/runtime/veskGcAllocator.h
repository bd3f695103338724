// A standard allocator over scanned collector memory, for containers whose nodes hold object pointers. Memory is never
// given back: the collector reclaims what nothing reaches any more.
#pragma once

#include <cstddef>
#include <limits>
#include <new>

#include "runtime/hostOperations.h"

template <class T>
struct VeskGcAllocator {
  using value_type = T;

  VeskGcAllocator() = default;
  template <class U>
  VeskGcAllocator(const VeskGcAllocator<U>&) {}  // NOLINT(google-explicit-constructor): allocators convert

  // May allocate. Throws std::bad_alloc on exhaustion and when the byte count does not fit.
  T* allocate(std::size_t count) {
    if (count > std::numeric_limits<std::size_t>::max() / sizeof(T)) throw std::bad_alloc();
    void* memory = Vesk_gcAlloc(count * sizeof(T));
    if (memory == nullptr) throw std::bad_alloc();
    return static_cast<T*>(memory);
  }
  void deallocate(T*, std::size_t) {}

  friend bool operator==(const VeskGcAllocator&, const VeskGcAllocator&) { return true; }
};
