// Pages of the collector's heap and the table that finds the page of any address. A small page is 64 KiB of cells of
// one size; a large block is a page of its own with a single cell. What a cell holds is a byte beside the page, never
// in it, so neither a stray write nor a stale pointer confuses the heap.
#pragma once

#include <atomic>
#include <bit>
#include <cstdint>

namespace host {

inline constexpr unsigned long kPageBytes = 65536;
inline constexpr unsigned long kSmallestCell = 32;
inline constexpr unsigned long kLargestCell = 32768;
inline constexpr unsigned kSizeClassCount = 57;

// Cells come in multiples of 16 bytes up to 512, then four sizes per doubling.
constexpr unsigned sizeClassOf(unsigned long bytes) {
  const unsigned long units = ((bytes < kSmallestCell ? kSmallestCell : bytes) + 15) / 16;
  if (units <= 32) return static_cast<unsigned>(units);
  const int exponent = std::bit_width(units - 1);
  const unsigned long quarter = (units - 1 - (1UL << (exponent - 1))) >> (exponent - 3);
  return static_cast<unsigned>(33 + (exponent - 6) * 4 + static_cast<int>(quarter));
}
constexpr unsigned long cellBytesOf(unsigned sizeClass) {
  if (sizeClass <= 32) return sizeClass * 16UL;
  const unsigned doubling = (sizeClass - 33) / 4;
  return ((32UL << doubling) + ((sizeClass - 33) % 4 + 1) * (8UL << doubling)) * 16;
}
static_assert(cellBytesOf(sizeClassOf(kLargestCell)) == kLargestCell &&
              sizeClassOf(kLargestCell) == kSizeClassCount - 1);
static_assert(cellBytesOf(sizeClassOf(513)) == 640 && cellBytesOf(sizeClassOf(1024)) == 1024);

enum class CellState : unsigned char { Free, Quarantined, Scanned, Atomic, Object };
inline constexpr unsigned char kMarked = 0x80;  // set in the state byte during a collection

struct Page {
  static constexpr unsigned kMaxCells = kPageBytes / kSmallestCell;
  static constexpr unsigned kGroup = kMaxCells / 64;

  char* base;
  unsigned long cellBytes;
  unsigned long spanBytes;  // mapped from `base` on; a recycled large block may use less
  unsigned cellCount;
  unsigned inverse;  // of cellBytes, in 2^-32: offset * inverse >> 32 is exact for offsets within a small page
  unsigned live;     // cells in use or in a cursor's run; written by the thread that owns the page and the collector
  unsigned quarantined;
  bool large;
  std::uint64_t busyGroups;  // bit g: some of the cells from g * kGroup on may be in use; so a sweep skips the others
  std::atomic<unsigned char>* states;  // of kMaxCells; apart from the page, so that a walk over all pages stays short

  CellState state(unsigned index) const {
    return static_cast<CellState>(states[index].load(std::memory_order_relaxed) & ~kMarked);
  }
  void setState(unsigned index, CellState state) {
    states[index].store(static_cast<unsigned char>(state), std::memory_order_relaxed);
  }
  char* cell(unsigned index) const { return base + index * cellBytes; }
};

// Where a thread takes cells of one size: from a run of free ones, [next, end), on a page that it owns until no cell is
// left there.
struct PageCursor {
  Page* page;
  unsigned next;
  unsigned end;
};

struct PageTableLeaf {
  std::atomic<Page*> pages[65536];
};
extern std::atomic<PageTableLeaf*> gPageTable[32768];  // by bits 32 to 46 of the address

// The page that holds the address, or null. Any value may be asked.
inline Page* pageOf(std::uintptr_t address) {
  if (address >> 47 != 0) return nullptr;
  const PageTableLeaf* leaf = gPageTable[address >> 32].load(std::memory_order_acquire);
  return leaf == nullptr ? nullptr : leaf->pages[address >> 16 & 0xffff].load(std::memory_order_acquire);
}

// The cell of the page that holds the address; cellCount or more when it lies behind the last.
inline unsigned cellIndexOf(const Page& page, std::uintptr_t address) {
  const std::uintptr_t offset = address - reinterpret_cast<std::uintptr_t>(page.base);
  if (page.large) return offset < page.cellBytes ? 0 : 1;
  return static_cast<unsigned>(offset * page.inverse >> 32);
}

// Whether a live object starts at this address. The low half of offset * inverse is below inverse exactly where a cell
// starts (Lemire, Kaser and Kurz, "Faster remainder by direct computation", 2019); the inverse of a large block is 1.
inline bool isObjectStart(const void* pointer) {
  const auto address = reinterpret_cast<std::uintptr_t>(pointer);
  const Page* page = pageOf(address);
  if (page == nullptr) return false;
  const std::uintptr_t product = (address - reinterpret_cast<std::uintptr_t>(page->base)) * page->inverse;
  const std::uintptr_t index = product >> 32;
  return static_cast<unsigned>(product) < page->inverse && index < page->cellCount &&
         page->state(static_cast<unsigned>(index)) == CellState::Object;
}

}  // namespace host
