// Root slots: a stack per thread, so that releasing the newest is one step and any other order is noticed.
#include <algorithm>
#include <cstdlib>

#include "host/stopProcess.h"
#include "host/threadState.h"

namespace {

using host::ThreadState;

// By malloc: a replaced operator new that is told to fail must not fail the host.
void growSlots(ThreadState& thread) {
  thread.slotCapacity = std::max(64UL, thread.slotCapacity * 2);
  thread.slots = static_cast<void***>(std::realloc(thread.slots, thread.slotCapacity * sizeof(void**)));
  if (thread.slots == nullptr) host::stopProcess("no memory for root slots");
}

void releaseOutOfOrder(ThreadState& thread, void** slot) {
  void*** end = thread.slots + thread.slotCount;
  void*** found = std::find(thread.slots, end, slot);
  if (found == end) host::stopProcess("Vesk_gcUnregisterRootSlot of a slot that is not registered");
  std::copy(found + 1, end, found);
  --thread.slotCount;
  host::noteMisuse(thread, "a root slot was released out of order");
}

}  // namespace

void Vesk_gcRegisterRootSlot(void** slot) {
  ThreadState& thread = host::enterOperation("Vesk_gcRegisterRootSlot", &host::OperationCounts::rootSlots);
  if (thread.slotCount == thread.slotCapacity) growSlots(thread);
  thread.slots[thread.slotCount++] = slot;
}

// The one operation that a module still calls after a raise.
void Vesk_gcUnregisterRootSlot(void** slot) {
  ThreadState& thread = host::enterOperation("Vesk_gcUnregisterRootSlot", &host::OperationCounts::slotReleases);
  if (thread.slotCount == 0 || thread.slots[thread.slotCount - 1] != slot) return releaseOutOfOrder(thread, slot);
  --thread.slotCount;
}

namespace host {

unsigned long rootSlotCount() { return gThread.slotCount; }

}  // namespace host
