// The pending exception of a thread, and the check that a native call left the thread as it found it.
#include <cstdlib>
#include <cstring>
#include <utility>

#include "host/lists.h"
#include "host/threadState.h"

void Vesk_raise(const char* exceptionTypeName, const char* message) {
  host::ThreadState& thread = host::enterOperation("Vesk_raise");
  if (thread.pendingType != nullptr) return;  // the first one stands; the second is an operation after it
  thread.pendingType = strdup(exceptionTypeName);
  thread.pendingMessage = strdup(message);
  thread.operationsBeforeRaise = host::operationsButReleases(thread);
}

namespace host {

namespace {

void noteOperationsAfterRaise(ThreadState& thread) {
  if (thread.pendingType == nullptr || operationsButReleases(thread) == thread.operationsBeforeRaise) return;
  noteMisuse(thread, "the module went on after a raise");
  thread.operationsBeforeRaise = operationsButReleases(thread);
}

}  // namespace

bool exceptionPending() { return gThread.pendingType != nullptr; }

std::optional<Exception> takeException() {
  ThreadState& thread = gThread;
  if (thread.pendingType == nullptr) return std::nullopt;
  noteOperationsAfterRaise(thread);
  std::optional<Exception> taken = Exception{thread.pendingType, thread.pendingMessage};
  std::free(std::exchange(thread.pendingType, nullptr));
  std::free(std::exchange(thread.pendingMessage, nullptr));
  return taken;
}

NativeCallCheck::NativeCallCheck() : slots_(gThread.slotCount), locks_(listLocksHeldByThisThread()) {
  gThread.misuse = nullptr;
}

std::optional<std::string> NativeCallCheck::problem() const {
  ThreadState& thread = gThread;
  noteOperationsAfterRaise(thread);
  if (thread.misuse != nullptr) return std::exchange(thread.misuse, nullptr);
  if (thread.slotCount != slots_) {
    return std::to_string(slots_) + " root slots before the call, " + std::to_string(thread.slotCount) + " after it";
  }
  if (listLocksHeldByThisThread() != locks_) return "a list lock is still held";
  return std::nullopt;
}

}  // namespace host
