// How every operation that may allocate begins: failure injection, stress mode, the heap limit and the decision to
// collect. Afterwards the operation takes its blocks without any collection in between.
#pragma once

#include "host/heap.h"

namespace host {

// Where the thread's credit does not cover the charge: everything below that may be due, then credit anew.
bool beginAllocationSlowly(ThreadState& thread, unsigned long charge);

// Once per operation that allocates, with what all its blocks are charged (chargeOf). False: the operation fails.
inline bool beginAllocation(ThreadState& thread, unsigned long charge) {
  ++thread.tally.allocations;
  if (charge >= thread.credit) return beginAllocationSlowly(thread, charge);
  thread.credit -= charge;
  return true;
}

// For operations that may collect without allocating anything now.
void collectUnderStress();
inline void mayCollect() {
  if (gStressMode.load(std::memory_order_relaxed)) [[unlikely]]
    collectUnderStress();
}

}  // namespace host
