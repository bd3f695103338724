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
  host::decideWatch(thread);
}

namespace host {

bool exceptionPending() { return gThread.pendingType != nullptr; }

std::optional<Exception> takeException() {
  ThreadState& thread = gThread;
  if (thread.pendingType == nullptr) return std::nullopt;
  std::optional<Exception> taken = Exception{thread.pendingType, thread.pendingMessage};
  std::free(std::exchange(thread.pendingType, nullptr));
  std::free(std::exchange(thread.pendingMessage, nullptr));
  decideWatch(thread);
  return taken;
}

NativeCallCheck::NativeCallCheck() : slots_(gThread.slotCount), locks_(listLocksHeldByThisThread()) {
  gThread.misuse = nullptr;
}

std::optional<std::string> NativeCallCheck::problem() const {
  ThreadState& thread = gThread;
  if (thread.misuse != nullptr) return std::exchange(thread.misuse, nullptr);
  if (thread.slotCount != slots_) {
    return std::to_string(slots_) + " root slots before the call, " + std::to_string(thread.slotCount) + " after it";
  }
  if (listLocksHeldByThisThread() != locks_) return "a list lock is still held";
  return std::nullopt;
}

}  // namespace host
