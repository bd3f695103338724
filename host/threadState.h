// What the host keeps per thread, in one block of constant-initialised thread-local storage, and the entry that every
// host operation passes through.
#pragma once

#include <cstdint>

#include "host/host.h"
#include "host/pages.h"

namespace host {

struct ThreadState {
  unsigned attachDepth;
  bool counts;  // for the collector: from the first attach until the thread exits

  unsigned long credit;  // bytes that it may still allocate before asking the heap again
  PageCursor cursors[kSizeClassCount];

  void*** slots;  // registered root slots, oldest first
  unsigned long slotCount;
  unsigned long slotCapacity;

  unsigned long allocationsUntilFailure;  // 0: none is set to fail
  Failing failing;
  bool failed;

  char* pendingType;  // of the pending exception, null when there is none; both copied by strdup
  char* pendingMessage;
  unsigned long operationsBeforeRaise;  // as operationsButReleases counts them
  const char* misuse;                   // the first thing that the module did wrong since the last check, or null

  std::uint64_t randomState;
  OperationCounts tally;
  unsigned long slotReleases;  // of the operations in the tally
};

extern constinit thread_local ThreadState gThread;

// Keeps what a module does wrong first for the next NativeCallCheck.
inline void noteMisuse(ThreadState& thread, const char* misuse) {
  if (thread.misuse == nullptr) thread.misuse = misuse;
}

// After a raise only root slots are released, so this stands still until the exception is taken.
inline unsigned long operationsButReleases(const ThreadState& thread) {
  return thread.tally.operations - thread.slotReleases;
}

[[noreturn]] void stopDetached(const char* operation);

// The first line of every host operation.
inline ThreadState& enterOperation(const char* operation) {
  ThreadState& thread = gThread;
  if (thread.attachDepth == 0) [[unlikely]]
    stopDetached(operation);
  ++thread.tally.operations;
  return thread;
}

// Whether this thread is the only one that counts, so that a collection may run on it.
bool isOnlyCountingThread();

}  // namespace host
