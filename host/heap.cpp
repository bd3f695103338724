#include "host/heap.h"

#include <pthread.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include "host/allocation.h"
#include "host/collector.h"
#include "host/objects.h"
#include "host/stopProcess.h"
#include "host/systemMemory.h"

namespace host {

std::atomic<PageTableLeaf*> gPageTable[32768];
unsigned long gChargedBytes = 0;
std::uintptr_t gLowestHeapAddress = std::numeric_limits<std::uintptr_t>::max();
std::uintptr_t gHighestHeapAddress = 0;

namespace {

constexpr unsigned long kQuarantineBytes = 64UL << 20;
constexpr unsigned long kSmallPagesAtOnce = 16;
constexpr unsigned long kIdleLargeBytes = 256UL << 20;

struct Cell {
  Page* page;
  unsigned index;
};

pthread_mutex_t gHeapMutex = PTHREAD_MUTEX_INITIALIZER;

// Tables of the heap. Held in a block that is never destroyed: exit handlers may still allocate.
struct Tables {
  SystemVector<Page*> pages;                       // all
  SystemVector<Page*> freePages;                   // small, without a cell in use or held back
  SystemVector<Page*> available[kSizeClassCount];  // small, with a free cell, owned by no thread
  SystemVector<Page*> freeLarge;
  SystemVector<Cell> quarantine;  // oldest first, from quarantineHead on
  unsigned long quarantineHead = 0;
  unsigned long quarantineChecked = 0;  // entries before it have been seen intact
  unsigned long quarantinedBytes = 0;
};
Tables& tables() {
  static Tables& made = *new (mapTableOrStop(sizeof(Tables))) Tables;
  return made;
}

void enterInPageTable(Page& page) {
  const auto first = reinterpret_cast<std::uintptr_t>(page.base);
  for (std::uintptr_t address = first; address < first + page.spanBytes; address += kPageBytes) {
    std::atomic<PageTableLeaf*>& leaf = gPageTable[address >> 32];
    if (leaf.load(std::memory_order_relaxed) == nullptr) {
      leaf.store(static_cast<PageTableLeaf*>(mapTableOrStop(sizeof(PageTableLeaf))), std::memory_order_release);
    }
    leaf.load(std::memory_order_relaxed)->pages[address >> 16 & 0xffff].store(&page, std::memory_order_release);
  }
  gLowestHeapAddress = std::min(gLowestHeapAddress, first);
  gHighestHeapAddress = std::max(gHighestHeapAddress, first + page.spanBytes);
}

// Page records are never given back: pages and large blocks are recycled with them.
Page& newPage(char* base, unsigned long spanBytes, bool large) {
  constexpr unsigned long kAtOnce = 128;
  static Page* records = nullptr;
  static std::atomic<unsigned char>* states = nullptr;
  static unsigned long left = 0;
  if (left == 0) {
    left = kAtOnce;
    records = static_cast<Page*>(mapTableOrStop(kAtOnce * sizeof(Page)));
    states = static_cast<std::atomic<unsigned char>*>(mapTableOrStop(kAtOnce * Page::kMaxCells));
  }
  --left;
  // Until it is set up for a size, a page is one free cell.
  Page& page = *new (records++) Page{base, spanBytes, spanBytes, 1, 1, 0, 0, large, 0, states};
  states += Page::kMaxCells;
  tables().pages.push_back(&page);
  enterInPageTable(page);
  return page;
}

bool mapSmallPages() {
  auto* memory = static_cast<char*>(mapAlignedSystemMemory(kSmallPagesAtOnce * kPageBytes, kPageBytes));
  if (memory == nullptr) return false;
  overwriteFreed(memory, kSmallPagesAtOnce * kPageBytes);
  poison(memory, kSmallPagesAtOnce * kPageBytes);
  for (unsigned long i = kSmallPagesAtOnce; i-- > 0;) {
    tables().freePages.push_back(&newPage(memory + i * kPageBytes, kPageBytes, false));
  }
  return true;
}

Page* takeLast(SystemVector<Page*>& pages) {
  Page* page = pages.back();
  pages.pop_back();
  return page;
}

// A page with at least one free cell of this size, or null.
Page* takePage(unsigned sizeClass) {
  Tables& heap = tables();
  if (!heap.available[sizeClass].empty()) return takeLast(heap.available[sizeClass]);
  if (heap.freePages.empty() && !mapSmallPages()) return nullptr;
  Page* page = takeLast(heap.freePages);
  page->cellBytes = cellBytesOf(sizeClass);
  page->cellCount = static_cast<unsigned>(kPageBytes / page->cellBytes);
  page->inverse = static_cast<unsigned>(((1UL << 32) + page->cellBytes - 1) / page->cellBytes);
  for (unsigned i = 0; i < page->cellCount; ++i) page->setState(i, CellState::Free);
  return page;
}

// The smallest free span that fits without wasting more than a quarter, or a new one, or null.
Page* takeLarge(unsigned long bytes) {
  SystemVector<Page*>& spans = tables().freeLarge;
  auto best = spans.end();
  for (auto span = spans.begin(); span != spans.end(); ++span) {
    const unsigned long size = (*span)->spanBytes;
    if (size < bytes || size - bytes > bytes / 4) continue;
    if (best == spans.end() || size < (*best)->spanBytes) best = span;
  }
  if (best != spans.end()) {
    Page* page = *best;
    spans.erase(best);
    return page;
  }
  auto* memory = static_cast<char*>(mapAlignedSystemMemory(bytes, kPageBytes));
  return memory == nullptr ? nullptr : &newPage(memory, bytes, true);
}

// Counts the cells [first, end) as in use.
void claim(Page& page, unsigned first, unsigned end) {
  page.live += end - first;
  page.busyGroups |= ~0UL << first / Page::kGroup & ~0UL >> (63 - (end - 1) / Page::kGroup);
}

void* allocateLarge(unsigned long bytes, CellState state) {
  const unsigned long charge = chargeOf(bytes);
  const HeapLock lock;
  Page* page = takeLarge(charge);
  if (page == nullptr) {
    gChargedBytes -= charge;
    return nullptr;
  }
  page->cellBytes = charge;
  poison(page->base, page->spanBytes);
  claim(*page, 0, 1);
  page->setState(0, state);
  unpoison(page->base, bytes);
  if (holdsBack()) overwriteUninitialized(page->base, bytes);
  return page->base;
}

// Moves the cursor to the next run of free cells on its page, if there is one.
bool findRun(PageCursor& cursor) {
  if (cursor.page == nullptr) return false;
  const Page& page = *cursor.page;
  while (cursor.end < page.cellCount && page.state(cursor.end) != CellState::Free) ++cursor.end;
  cursor.next = cursor.end;
  while (cursor.end < page.cellCount && page.state(cursor.end) == CellState::Free) ++cursor.end;
  if (cursor.next == cursor.end) return false;
  claim(*cursor.page, cursor.next, cursor.end);
  return true;
}

// The same on a page of its own or another; false when no page is to be had.
bool advance(PageCursor& cursor, unsigned sizeClass) {
  while (!findRun(cursor)) {
    const HeapLock lock;
    cursor = {takePage(sizeClass), 0, 0};
    if (cursor.page == nullptr) return false;
  }
  return true;
}

// Whether freed memory is still as it was left. `bytes` is a multiple of 8.
VESK_HOST_UNCHECKED bool isOverwritten(const void* memory, unsigned long bytes) {
  const auto* words = static_cast<const volatile std::uint64_t*>(memory);
  for (unsigned long i = 0; i < bytes / 8; ++i) {
    if (words[i] != 0xDBDBDBDBDBDBDBDB) return false;
  }
  return true;
}

void verifyFreed(const Cell& cell) {
  if (!isOverwritten(cell.page->cell(cell.index), cell.page->cellBytes)) {
    stopProcess("memory at %p was written after it was freed", static_cast<void*>(cell.page->cell(cell.index)));
  }
}

void releaseFromQuarantine() {
  Tables& heap = tables();
  while (heap.quarantinedBytes > kQuarantineBytes) {
    const Cell cell = heap.quarantine[heap.quarantineHead++];
    verifyFreed(cell);
    --cell.page->quarantined;
    heap.quarantinedBytes -= cell.page->cellBytes;
    cell.page->setState(cell.index, CellState::Free);
    if (cell.page->large) heap.freeLarge.push_back(cell.page);
  }
  if (heap.quarantineHead * 2 < heap.quarantine.size()) return;
  heap.quarantine.erase(heap.quarantine.begin(), heap.quarantine.begin() + static_cast<long>(heap.quarantineHead));
  heap.quarantineChecked -= std::min(heap.quarantineChecked, heap.quarantineHead);
  heap.quarantineHead = 0;
}

void holdBack(Page& page, unsigned index) {
  page.setState(index, CellState::Quarantined);
  ++page.quarantined;
  tables().quarantine.push_back({&page, index});
  tables().quarantinedBytes += page.cellBytes;
}

void overwriteDead(char* block, unsigned long bytes, bool sparsely) {
  unpoison(block, bytes);
  if (sparsely) {
    overwriteFreedSparsely(block, bytes);
  } else {
    overwriteFreed(block, bytes);
  }
  poison(block, bytes);
}

// Frees the group's unmarked cells and clears the marks of the others; returns how many it freed.
unsigned sweepGroup(Page& page, unsigned group, bool held) {
  const unsigned end = std::min((group + 1) * Page::kGroup, page.cellCount);
  unsigned freed = 0;
  bool isBusy = false;
  for (unsigned i = group * Page::kGroup; i < end; ++i) {
    const unsigned char state = page.states[i].load(std::memory_order_relaxed);
    if (state < static_cast<unsigned char>(CellState::Scanned)) continue;
    if ((state & kMarked) != 0) {
      page.states[i].store(state & ~kMarked, std::memory_order_relaxed);
      isBusy = true;
      continue;
    }
    ++freed;
    if (state == static_cast<unsigned char>(CellState::Object)) releaseObject(page.cell(i));
    overwriteDead(page.cell(i), page.cellBytes, page.large && !held);
    if (held) {
      holdBack(page, i);
    } else {
      page.setState(i, CellState::Free);
    }
  }
  if (!isBusy) page.busyGroups &= ~(1UL << group);
  return freed;
}

void sweepPage(Page& page) {
  const bool held = holdsBack();
  unsigned freed = 0;
  for (std::uint64_t groups = page.busyGroups; groups != 0; groups &= groups - 1) {
    freed += sweepGroup(page, static_cast<unsigned>(std::countr_zero(groups)), held);
  }
  page.live -= freed;
  gChargedBytes -= freed * page.cellBytes;
  if (page.large && !held && freed != 0) tables().freeLarge.push_back(&page);
}

// Puts a small page with free cells among those for its size or, when all are free, among those for any.
void listPage(Page& page) {
  const unsigned used = page.live + page.quarantined;
  if (page.large || used == page.cellCount) return;
  Tables& heap = tables();
  (used == 0 ? heap.freePages : heap.available[sizeClassOf(page.cellBytes)]).push_back(&page);
}

// Beyond a bound, the large blocks that have been free for longest lose their memory, not their addresses.
void trimFreeLarge() {
  unsigned long idle = 0;
  const SystemVector<Page*>& pages = tables().freeLarge;
  for (auto page = pages.rbegin(); page != pages.rend(); ++page) {
    idle += (*page)->spanBytes;
    if (idle > kIdleLargeBytes) madvise((*page)->base, (*page)->spanBytes, MADV_DONTNEED);
  }
}

}  // namespace

HeapLock::HeapLock() { pthread_mutex_lock(&gHeapMutex); }
HeapLock::~HeapLock() { pthread_mutex_unlock(&gHeapMutex); }

void* allocateCell(ThreadState& thread, unsigned long bytes, CellState state) {
  if (bytes + kRedzoneBytes > kLargestCell) return allocateLarge(bytes, state);
  return takeCell(thread, sizeClassOf(bytes + kRedzoneBytes), bytes, state);
}

void* takeCellSlowly(ThreadState& thread, unsigned sizeClass, unsigned long bytes, CellState state) {
  if (advance(thread.cursors[sizeClass], sizeClass)) return takeCell(thread, sizeClass, bytes, state);
  thread.credit += cellBytesOf(sizeClass);
  return nullptr;
}

void giveBackPagesLocked(ThreadState& thread) {
  gChargedBytes -= thread.credit;
  thread.credit = 0;
  for (unsigned sizeClass = 0; sizeClass < kSizeClassCount; ++sizeClass) {
    const PageCursor cursor = std::exchange(thread.cursors[sizeClass], {});
    if (cursor.page == nullptr) continue;
    cursor.page->live -= cursor.end - cursor.next;
    if (cursor.page->live + cursor.page->quarantined < cursor.page->cellCount) {
      tables().available[sizeClass].push_back(cursor.page);
    }
  }
}

void giveBackPages(ThreadState& thread) {
  const HeapLock lock;
  giveBackPagesLocked(thread);
}

void sweepHeap() {
  Tables& heap = tables();
  heap.freePages.clear();
  for (auto& pages : heap.available) pages.clear();
  for (Page* page : heap.pages) {
    if (page->live != 0) sweepPage(*page);
    listPage(*page);
  }
  releaseFromQuarantine();  // what it frees is listed the next time
  trimFreeLarge();
}

HeapCounts heapCounts() {
  const HeapLock lock;
  HeapCounts counts = {};
  for (const Page* page : tables().pages) {
    for (unsigned i = 0; i < page->cellCount; ++i) {
      if (page->state(i) < CellState::Scanned) continue;
      counts.liveBytes += page->cellBytes;
      if (page->state(i) == CellState::Object) ++counts.liveObjects;
    }
  }
  counts.collections = gCollections;
  counts.finalizersRun = gFinalizersRun;
  return counts;
}

// Blocks that are held back are looked at once here, and again when they are released.
std::optional<std::string> checkHeap() {
  const HeapLock lock;
  Tables& heap = tables();
  bool isIntact = true;
  for (unsigned long i = std::max(heap.quarantineChecked, heap.quarantineHead); i < heap.quarantine.size(); ++i) {
    const Cell& cell = heap.quarantine[i];
    isIntact = isIntact && isOverwritten(cell.page->cell(cell.index), cell.page->cellBytes);
  }
  if (isIntact) heap.quarantineChecked = heap.quarantine.size();
  for (const Page* page : heap.pages) {
    for (unsigned i = 0; i < page->cellCount; ++i) {
      const CellState state = page->state(i);
      if (state == CellState::Object && !isRecordSound(page->cell(i))) return "an object's record is damaged";
      if (state != CellState::Free || page->large) continue;  // large blocks are overwritten sparsely
      isIntact = isIntact && isOverwritten(page->cell(i), page->cellBytes);
    }
  }
  if (!isIntact) return "memory was written after it was freed";
  return std::nullopt;
}

}  // namespace host
