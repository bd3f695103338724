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

}  // namespace

void failNativeAllocation(unsigned long nth, bool forEver) { tFailing = {nth, forEver, false}; }

bool endFailingNativeAllocation() {
  const bool failed = tFailing.failed;
  tFailing = {};
  return failed;
}

// The array forms of the standard library forward to these (those of a sanitizer are its own); over-aligned ones are
// its own, too.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
  return mayAllocate(bytes) ? std::malloc(bytes == 0 ? 1 : bytes) : nullptr;
}
void* operator new(std::size_t bytes) {
  void* memory = operator new(bytes, std::nothrow);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
