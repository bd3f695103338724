// The collector's heap: cells of memory, charged against a limit, overwritten and held back when they are found dead.
// Nothing here collects; collector.h decides when, allocation.h charges.
#pragma once

#include "host/pages.h"
#include "host/poison.h"
#include "host/threadState.h"

namespace host {

// Held while pages change hands and for the length of a collection.
class HeapLock {
 public:
  HeapLock();
  ~HeapLock();
  HeapLock(const HeapLock&) = delete;
  HeapLock& operator=(const HeapLock&) = delete;
};

// What a request of this many bytes is charged; more than any limit allows when it is beyond all memory.
constexpr unsigned long chargeOf(unsigned long bytes) {
  if (bytes >= 1UL << 46) return 1UL << 62;
  bytes += kRedzoneBytes;
  if (bytes <= kLargestCell) return cellBytesOf(sizeClassOf(bytes));
  return (bytes + kPageBytes - 1) / kPageBytes * kPageBytes;
}

// Bytes charged to blocks and to threads' credits. Caller holds the heap lock.
extern unsigned long gChargedBytes;

extern std::atomic<bool> gStressMode;
// Whether freed blocks stay out of use for a while, and new ones show that they are not cleared.
inline bool holdsBack() { return kSanitized || gStressMode.load(std::memory_order_relaxed); }

// A block for a request that is already charged: not cleared, 16-byte aligned. Null, with the charge given back, when
// the system has no memory. Never collects.
void* allocateCell(ThreadState& thread, unsigned long bytes, CellState state);

// The same for callers that know the size class: that of `bytes` and a redzone.
void* takeCellSlowly(ThreadState& thread, unsigned sizeClass, unsigned long bytes, CellState state);
inline void* takeCell(ThreadState& thread, unsigned sizeClass, unsigned long bytes, CellState state) {
  PageCursor& cursor = thread.cursors[sizeClass];
  if (cursor.next == cursor.end) return takeCellSlowly(thread, sizeClass, bytes, state);
  const unsigned index = cursor.next++;
  cursor.page->setState(index, state);
  char* block = cursor.page->cell(index);
  unpoison(block, bytes);
  if (holdsBack()) [[unlikely]]
    overwriteUninitialized(block, bytes);
  return block;
}

// The thread's pages and credit go back to the heap.
void giveBackPages(ThreadState& thread);
// Caller holds the heap lock.
void giveBackPagesLocked(ThreadState& thread);

// Frees every unmarked cell and clears the marks. Caller holds the heap lock and has given back the thread's pages.
void sweepHeap();

// Addresses outside [lowest, highest) are in no page.
extern std::uintptr_t gLowestHeapAddress;
extern std::uintptr_t gHighestHeapAddress;

}  // namespace host
