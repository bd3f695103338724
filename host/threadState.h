// What the host keeps per thread, in one block of constant-initialised thread-local storage, and the entry that every
// host operation passes through.
#pragma once

#include <cstdint>

#include "host/host.h"
#include "host/pages.h"

namespace host {

struct ThreadState {
  bool unwatched;  // attached, without a pending exception, and nobody counts: operations need not look further
  bool tallies;    // what it asks for is counted
  bool counts;     // for the collector: from the first attach until the thread exits
  unsigned attachDepth;

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
  const char* misuse;  // the first thing that the module did wrong since the last check, or null

  std::uint64_t randomState;
  OperationCounts tally;
};

extern constinit thread_local ThreadState gThread;

// Keeps what a module does wrong first for the next NativeCallCheck.
inline void noteMisuse(ThreadState& thread, const char* misuse) {
  if (thread.misuse == nullptr) thread.misuse = misuse;
}

// To be called after every change of what `unwatched` stands for.
inline void decideWatch(ThreadState& thread) {
  thread.unwatched = thread.attachDepth != 0 && !thread.tallies && thread.pendingType == nullptr;
}

// Stops the process on a thread that is not attached. Counts the operation, under `also` too, and notes one that
// follows a raise; releasing root slots may.
void enterWatched(ThreadState& thread, const char* operation, unsigned long OperationCounts::*also);

// The first line of every host operation. Almost always one test and no store: a counter would make each operation
// wait for the one before.
inline ThreadState& enterOperation(const char* operation, unsigned long OperationCounts::*also = nullptr) {
  ThreadState& thread = gThread;
  if (!thread.unwatched) [[unlikely]]
    enterWatched(thread, operation, also);
  return thread;
}

// Whether this thread is the only one that counts, so that a collection may run on it.
bool isOnlyCountingThread();

}  // namespace host
