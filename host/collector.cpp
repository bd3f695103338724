#include "host/collector.h"

#include "host/heap.h"
#include "host/moduleImages.h"
#include "host/poison.h"
#include "host/systemMemory.h"

namespace host {

unsigned long gCollections = 0;
unsigned long gFinalizersRun = 0;
unsigned long gScannedBytes = 0;
unsigned long gKeptBytes = 0;
unsigned long gLatestLargeBytes = 0;

namespace {

struct Block {
  const char* start;
  unsigned long bytes;
};

// Marked blocks whose words are still to be scanned.
SystemVector<Block>& pendingBlocks() {
  static auto& blocks = *new (mapTableOrStop(sizeof(SystemVector<Block>))) SystemVector<Block>;
  return blocks;
}

// Reads whatever lies there: redzones, poisoned tails of blocks, memory that other code writes without a lock.
VESK_HOST_UNCHECKED void markWords(const char* start, unsigned long bytes) {
  const auto* words = reinterpret_cast<const volatile std::uintptr_t*>(start);
  const std::uintptr_t lowest = gLowestHeapAddress;
  const std::uintptr_t range = gHighestHeapAddress - lowest;
  for (unsigned long i = 0; i < bytes / sizeof(std::uintptr_t); ++i) {
    const std::uintptr_t word = words[i];
    if (word - lowest < range) markAddress(word);
  }
}

void markRoots(const ThreadState& thread) {
  for (unsigned long i = 0; i < thread.slotCount; ++i) {
    markWords(reinterpret_cast<const char*>(thread.slots[i]), sizeof(void*));
  }
  markHandles();
  forEachModuleSegment(markWords);
}

void markReachable() {
  SystemVector<Block>& blocks = pendingBlocks();
  while (!blocks.empty()) {
    const Block block = blocks.back();
    blocks.pop_back();
    gScannedBytes += block.bytes;
    markWords(block.start, block.bytes);
  }
}

}  // namespace

void markAddress(std::uintptr_t address) {
  Page* page = pageOf(address);
  if (page == nullptr) return;
  const unsigned index = cellIndexOf(*page, address);
  if (index >= page->cellCount) return;
  const unsigned char state = page->states[index].load(std::memory_order_relaxed);
  if (state < static_cast<unsigned char>(CellState::Scanned) || (state & kMarked) != 0) return;
  page->states[index].store(state | kMarked, std::memory_order_relaxed);
  if (state != static_cast<unsigned char>(CellState::Atomic)) {
    pendingBlocks().push_back({page->cell(index), page->cellBytes});
  }
}

bool collectIfAlone() {
  ThreadState& thread = gThread;
  const HeapLock lock;  // taken first: no thread begins to count until the collection is over
  if (!isOnlyCountingThread()) return false;
  giveBackPagesLocked(thread);
  gScannedBytes = 0;
  markRoots(thread);
  markReachable();
  sweepHeap();
  gKeptBytes = gChargedBytes;
  gLatestLargeBytes = 0;
  ++gCollections;
  return true;
}

void collect() { collectIfAlone(); }

}  // namespace host
