// Memory straight from the system, for the host's own tables: independent of malloc and of a replaced operator new, so
// that a collection cannot fail in the middle. It stays mapped until the process ends.
#pragma once

#include <cstddef>
#include <vector>

namespace host {

// Zeroed pages at a multiple of `alignment`, a power of two that is at least a system page; null when there are none.
void* mapAlignedSystemMemory(unsigned long bytes, unsigned long alignment);

// For tables: zeroed pages or the end of the process, and the opposite.
void* mapTableOrStop(unsigned long bytes);
void unmapTable(void* memory, unsigned long bytes);

// For vectors that grow a few times and live as long as the process.
template <class T>
struct SystemAllocator {
  using value_type = T;

  SystemAllocator() = default;
  template <class U>
  SystemAllocator(const SystemAllocator<U>&) {}  // NOLINT(google-explicit-constructor): allocators convert

  T* allocate(std::size_t count) { return static_cast<T*>(mapTableOrStop(count * sizeof(T))); }
  void deallocate(T* memory, std::size_t count) { unmapTable(memory, count * sizeof(T)); }

  friend bool operator==(const SystemAllocator&, const SystemAllocator&) { return true; }
};

template <class T>
using SystemVector = std::vector<T, SystemAllocator<T>>;

}  // namespace host
