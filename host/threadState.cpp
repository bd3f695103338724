#include "host/threadState.h"

#include <pthread.h>

#include <atomic>
#include <cstdlib>

#include "host/heap.h"
#include "host/random.h"
#include "host/stopProcess.h"

namespace host {

constinit thread_local ThreadState gThread = {};

namespace {

std::atomic<unsigned> gCountingThreads{0};

// A key's destructor runs when a thread exits, but not for the main thread when the process does: exit handlers may
// still work with the host.
void leaveForGood(void* state) {
  auto& thread = *static_cast<ThreadState*>(state);
  giveBackPages(thread);
  std::free(thread.slots);
  std::free(thread.pendingType);
  std::free(thread.pendingMessage);
  thread = {};
  --gCountingThreads;
}

pthread_key_t exitKey() {
  static const pthread_key_t key = [] {
    pthread_key_t made;
    if (pthread_key_create(&made, leaveForGood) != 0) stopProcess("no key for thread exits");
    return made;
  }();
  return key;
}

// Under the heap lock, so that no thread joins while a collection runs.
void beginToCount(ThreadState& thread) {
  const HeapLock lock;
  pthread_setspecific(exitKey(), &thread);
  thread.counts = true;
  thread.randomState = freshRandomState();
  ++gCountingThreads;
}

}  // namespace

void enterWatched(ThreadState& thread, const char* operation, unsigned long OperationCounts::*also) {
  if (thread.attachDepth == 0) stopProcess("%s on a thread that is not attached", operation);
  ++thread.tally.operations;
  if (also != nullptr) ++(thread.tally.*also);
  if (thread.pendingType != nullptr && also != &OperationCounts::slotReleases) {
    noteMisuse(thread, "the module went on after a raise");
  }
}

bool isOnlyCountingThread() { return gThread.counts && gCountingThreads == 1; }

void attachThread() {
  ThreadState& thread = gThread;
  if (!thread.counts) beginToCount(thread);
  ++thread.attachDepth;
  decideWatch(thread);
}

void detachThread() {
  ThreadState& thread = gThread;
  if (thread.attachDepth == 0) stopProcess("detachThread on a thread that is not attached");
  --thread.attachDepth;
  decideWatch(thread);
}

OperationCounter::OperationCounter() {
  ThreadState& thread = gThread;
  thread.tally = {};
  thread.tallies = true;
  decideWatch(thread);
}
OperationCounter::~OperationCounter() {
  ThreadState& thread = gThread;
  thread.tallies = false;
  decideWatch(thread);
}
OperationCounts OperationCounter::counts() const { return gThread.tally; }

}  // namespace host
