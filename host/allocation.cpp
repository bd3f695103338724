#include "host/allocation.h"

#include <algorithm>

#include "host/collector.h"

namespace host {

std::atomic<bool> gStressMode{false};

namespace {

constexpr unsigned long kCreditBytes = 64UL << 10;
constexpr unsigned long kSmallestInterval = 4UL << 20;  // between two collections; what a cache holds is reused soonest

unsigned long gHeapLimit = 64UL << 30;  // under the heap lock

// Counts down to the failures that a test asked for.
bool isToldToFail(ThreadState& thread) {
  if (thread.allocationsUntilFailure == 0 || --thread.allocationsUntilFailure != 0) return false;
  thread.failed = true;
  if (thread.failing == Failing::ForEver) thread.allocationsUntilFailure = 1;
  return true;
}

void returnCredit(ThreadState& thread) {
  const HeapLock lock;
  gChargedBytes -= thread.credit;
  thread.credit = 0;
}

// When as much has come since the last collection as that one had to read: much in a heap of objects, little where
// values fill it. The latest large block is rather a part of a result that is still being made, so it does not count.
bool isDue(unsigned long charge) {
  const HeapLock lock;
  if (charge > gHeapLimit || gChargedBytes > gHeapLimit - charge) return true;
  return gChargedBytes > gKeptBytes + gLatestLargeBytes + std::max(kSmallestInterval, gScannedBytes);
}

void collectWhenDue(unsigned long charge) {
  if (isDue(charge)) collectIfAlone();
}

// A thread that is watched asks for every block; others get some credit with it.
bool chargeWithinLimit(ThreadState& thread, unsigned long charge) {
  const HeapLock lock;
  if (charge > gHeapLimit || gChargedBytes > gHeapLimit - charge) return false;
  gChargedBytes += charge;
  if (charge > kLargestCell) gLatestLargeBytes = charge;
  const bool watched = thread.allocationsUntilFailure != 0 || gStressMode.load(std::memory_order_relaxed);
  thread.credit = watched ? 0 : std::min(kCreditBytes, gHeapLimit - gChargedBytes);
  gChargedBytes += thread.credit;
  return true;
}

}  // namespace

void collectUnderStress() { collectIfAlone(); }

bool beginAllocationSlowly(ThreadState& thread, unsigned long charge) {
  returnCredit(thread);
  mayCollect();
  if (isToldToFail(thread)) return false;
  collectWhenDue(charge);
  return chargeWithinLimit(thread, charge);
}

void setStressMode(bool on) {
  gStressMode.store(on, std::memory_order_relaxed);
  returnCredit(gThread);
}
bool stressMode() { return gStressMode.load(std::memory_order_relaxed); }

void failAllocation(unsigned long nth, Failing failing) {
  ThreadState& thread = gThread;
  returnCredit(thread);
  thread.allocationsUntilFailure = nth;
  thread.failing = failing;
  thread.failed = false;
}

bool endFailing() {
  ThreadState& thread = gThread;
  thread.allocationsUntilFailure = 0;
  return thread.failed;
}

void setHeapLimit(unsigned long bytes) {
  returnCredit(gThread);
  const HeapLock lock;
  gHeapLimit = bytes;
}

}  // namespace host

void* Vesk_gcAlloc(unsigned long bytes) {
  host::ThreadState& thread = host::enterOperation("Vesk_gcAlloc");
  if (!host::beginAllocation(thread, host::chargeOf(bytes))) return nullptr;
  return host::allocateCell(thread, bytes, host::CellState::Scanned);
}

void* Vesk_gcAllocAtomic(unsigned long bytes) {
  host::ThreadState& thread = host::enterOperation("Vesk_gcAllocAtomic");
  if (!host::beginAllocation(thread, host::chargeOf(bytes))) return nullptr;
  return host::allocateCell(thread, bytes, host::CellState::Atomic);
}
