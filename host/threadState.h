// What the host keeps per thread, in one block of constant-initialised thread-local storage, and the entry that every
// host operation passes through.
#pragma once

#include <cstdint>

#include "host/host.h"
#include "host/pages.h"

namespace host {

// What entering an operation means for this thread. Anything but Attached takes the slow way.
enum class ThreadMode : unsigned char { Detached, Attached, Raised };

struct ThreadState {
  ThreadMode mode;
  bool counts;  // for the collector: from the first attach until the thread exits
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
  const char* misuse;     // what the module did wrong first since the last check, null when nothing
  const char* misusedIn;  // the operation that noticed it

  std::uint64_t randomState;
  OperationCounts tally;
};

extern constinit thread_local ThreadState gThread;

// Stops the process on a detached thread; on one with a pending exception records that the module went on.
[[gnu::cold]] void noteUnusualEntry(ThreadState& thread, const char* operation);

// Keeps the first thing that a module does wrong for the next NativeCallCheck.
void noteMisuse(ThreadState& thread, const char* misuse, const char* operation);

// The first line of every host operation.
inline ThreadState& enterOperation(const char* operation) {
  ThreadState& thread = gThread;
  if (thread.mode != ThreadMode::Attached) [[unlikely]]
    noteUnusualEntry(thread, operation);
  ++thread.tally.operations;
  return thread;
}

// The same for operations of a few instructions: false, with nothing done, where enterOperation must be called.
inline bool enteredQuietly() {
  if (gThread.mode != ThreadMode::Attached) [[unlikely]]
    return false;
  ++gThread.tally.operations;
  return true;
}

// Whether this thread is the only one that counts, so that a collection may run on it.
bool isOnlyCountingThread();

}  // namespace host
