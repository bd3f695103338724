// The minimal host runtime as its embedders see it: threads, controls over the collector and its failures, making and
// looking at language objects, and loading the module. The operations for modules are in runtime/hostOperations.h.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/hostOperations.h"

namespace host {

// ---- Threads. Host operations work on attached threads only; on any other the process stops with a message. For the
// collector a thread counts from its first attach until it exits.

// Attaches the calling thread, or once more; each call is undone by one of detachThread, which stops the process on a
// thread that is not attached.
VESK_HOST_API void attachThread();
VESK_HOST_API void detachThread();

// Attaches the thread for a scope.
struct AttachedThread {
  AttachedThread() { attachThread(); }
  ~AttachedThread() { detachThread(); }
  AttachedThread(const AttachedThread&) = delete;
  AttachedThread& operator=(const AttachedThread&) = delete;
};

// ---- Collection. It runs on request, when enough was allocated, and in stress mode before every allocation; only
// while one thread counts, otherwise it is skipped.

// Collects now, or does nothing while more than one thread counts.
VESK_HOST_API void collect();
// Stress mode is off at first. It also keeps freed memory out of use for a while and fills new memory.
VESK_HOST_API void setStressMode(bool on);
VESK_HOST_API bool stressMode();

// Keeps an object or a collector block alive for the embedder, anywhere and in any order. Null is allowed.
class VESK_HOST_API Handle {
 public:
  explicit Handle(void* object = nullptr);
  ~Handle();
  Handle(Handle&& other) noexcept;
  Handle& operator=(Handle&& other) noexcept;
  void* get() const { return object_; }

 private:
  friend void markHandles();
  void* object_;
  Handle* next_ = nullptr;  // all handles form one list
  Handle** link_ = nullptr;
};

// ---- Failure injection and limits.

enum class Failing { Once, ForEver };
// Makes the nth allocation of this thread from now (1 is the next) fail, or it and all that follow.
VESK_HOST_API void failAllocation(unsigned long nth, Failing failing);
// Ends it; true when an allocation did fail since it was set.
VESK_HOST_API bool endFailing();
// Requests that would take the heap above this many bytes fail. The default is 64 GiB.
VESK_HOST_API void setHeapLimit(unsigned long bytes);

// ---- Counts.

// What the heap holds now, and what it has done.
struct HeapCounts {
  unsigned long liveObjects;  // objects not yet found dead
  unsigned long liveBytes;    // of objects and raw blocks
  unsigned long collections;  // since the start of the process
  unsigned long finalizersRun;
};
// Walks all pages. The calling thread need not be attached.
VESK_HOST_API HeapCounts heapCounts();

// What a thread has asked of the host.
struct OperationCounts {
  unsigned long operations;   // all host operations
  unsigned long allocations;  // those that tried to allocate
  unsigned long rootSlots;    // registrations
  unsigned long slotReleases;
  unsigned long typeNames;  // objectTypeName and type-name arithmetic
  unsigned long fieldAccesses;
};

// Counts what this thread asks of the host from the counter's making to its end. One at a time; meanwhile every
// operation takes a little longer.
class VESK_HOST_API OperationCounter {
 public:
  OperationCounter();
  ~OperationCounter();
  OperationCounter(const OperationCounter&) = delete;
  OperationCounter& operator=(const OperationCounter&) = delete;

  OperationCounts counts() const;
};

// The root slots that are registered on this thread now.
VESK_HOST_API unsigned long rootSlotCount();

// Whether the heap's own records are sound; the reason when not.
VESK_HOST_API std::optional<std::string> checkHeap();

// ---- Exceptions.

// A raised language exception: the name of its type as the module gave it, and its message.
struct Exception {
  std::string typeName;
  std::string message;
};
// Whether one is pending on this thread, and that one itself, which is then pending no more.
VESK_HOST_API bool exceptionPending();
VESK_HOST_API std::optional<Exception> takeException();

// Proves around a native call that it leaves root slots as it found them, released them newest first, and holds no
// list lock that it took: create before the call, ask after it.
class VESK_HOST_API NativeCallCheck {
 public:
  NativeCallCheck();
  // What is out of balance, or nothing. Clears the record of a slot released out of order.
  std::optional<std::string> problem() const;

 private:
  unsigned long slots_;
  unsigned long locks_;
};

// ---- Objects and lists.

// An empty ArrayList; with a list kind 1 to 11 a packed one of `count` zero elements, named after the kind unless
// `named` is false.
VESK_HOST_API void* newObjectList();
VESK_HOST_API void* newPrimitiveList(unsigned char kind, unsigned long count, bool named = true);
// A language string; not a number.
VESK_HOST_API void* newString(std::string_view text);
// Gives the list its mutex (error-checking: taking it twice is a reported failure) and sets `needsLock`.
VESK_HOST_API void giveListLock(void* list);
// Whether the list's mutex is held by anybody, asked by trying it; false for a list without one.
VESK_HOST_API bool listLockHeld(void* list);
// A list type's full name may carry an element type: "vesk.collections.ArrayList<vesk.Float>".
VESK_HOST_API void setListTypeName(void* list, const char* fullName);
// "vesk.math.NDArray<alias>" and the like: `alias` stands for `canonical` in normalizeTypeAliasForLookup.
VESK_HOST_API void addTypeAlias(std::string_view alias, std::string_view canonical);
// Starts this thread's fast random stream anew.
VESK_HOST_API void seedFastRandom(std::uint64_t seed);

// ---- Modules.

// The image that holds this address is a module: its writable segments and thread-local block are roots.
VESK_HOST_API void registerModuleImage(const void* addressInside);

// A module opened the way a runtime does it. Throws std::runtime_error with the loader's reason.
class VESK_HOST_API Module {
 public:
  explicit Module(const std::string& path);
  // The native of a class method, as "vesk.math", "NDArray", "sumNative"; an empty package is allowed.
  void* native(std::string_view package, std::string_view className, std::string_view method) const;
  // Any exported name.
  void* symbol(const std::string& name) const;

 private:
  void* handle_;
};

// The module beside this host library in a build or install tree.
VESK_HOST_API std::string defaultModulePath();

}  // namespace host
