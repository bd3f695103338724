// The embedder's handles, linked through the handles themselves so that neither making nor dropping one allocates.
#include <utility>

#include "host/collector.h"
#include "host/heap.h"

namespace host {

namespace {
Handle* gFirstHandle = nullptr;  // the list changes under the heap lock only
}

Handle::Handle(void* object) : object_(object), link_(&gFirstHandle) {
  const HeapLock lock;
  next_ = gFirstHandle;
  if (next_ != nullptr) next_->link_ = &next_;
  gFirstHandle = this;
}

Handle::~Handle() {
  const HeapLock lock;
  *link_ = next_;
  if (next_ != nullptr) next_->link_ = link_;
}

Handle::Handle(Handle&& other) noexcept : Handle(std::exchange(other.object_, nullptr)) {}

Handle& Handle::operator=(Handle&& other) noexcept {
  if (this != &other) object_ = std::exchange(other.object_, nullptr);
  return *this;
}

void markHandles() {
  for (const Handle* handle = gFirstHandle; handle != nullptr; handle = handle->next_) {
    markAddress(reinterpret_cast<std::uintptr_t>(handle->object_));
  }
}

}  // namespace host
