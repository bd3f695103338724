#include "support/allocation.h"

#include <cstdlib>
#include <new>

namespace {

struct Failing {
  unsigned long left = 0;  // requests until the failing one, 0 when none fails
  bool forEver = false;
  bool failed = false;
};
thread_local Failing tFailing;

bool mayAllocate(std::size_t bytes) {
  if (bytes > kNativeAllocationCeiling) return false;
  if (tFailing.left == 0) return true;
  if (tFailing.left > 1) {
    --tFailing.left;
    return true;
  }
  if (!tFailing.forEver) tFailing.left = 0;
  tFailing.failed = true;
  return false;
}

void* allocate(std::size_t bytes, std::size_t alignment) {
  if (!mayAllocate(bytes)) throw std::bad_alloc();
  const std::size_t rounded = (bytes + alignment - 1) / alignment * alignment;
  void* memory = alignment <= alignof(std::max_align_t) ? std::malloc(bytes == 0 ? 1 : bytes)
                                                        : std::aligned_alloc(alignment, rounded);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

}  // namespace

void failNativeAllocation(unsigned long nth, bool forEver) { tFailing = {nth, forEver, false}; }

bool endFailingNativeAllocation() {
  const bool failed = tFailing.failed;
  tFailing = {};
  return failed;
}

// The array and nothrow forms of the standard library forward to these.
void* operator new(std::size_t bytes) { return allocate(bytes, 1); }
void* operator new(std::size_t bytes, std::align_val_t alignment) {
  return allocate(bytes, static_cast<std::size_t>(alignment));
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }
