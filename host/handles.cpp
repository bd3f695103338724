#include "host/handles.h"

#include <utility>

#include "host/heap.h"

namespace host {

namespace {
Handle* gFirstHandle = nullptr;
}

void HandleList::insert(Handle& handle) {
  handle.next_ = gFirstHandle;
  handle.link_ = &gFirstHandle;
  if (gFirstHandle != nullptr) gFirstHandle->link_ = &handle.next_;
  gFirstHandle = &handle;
}

void HandleList::remove(Handle& handle) {
  *handle.link_ = handle.next_;
  if (handle.next_ != nullptr) handle.next_->link_ = handle.link_;
}

const Handle* HandleList::first() { return gFirstHandle; }

Handle::Handle(void* object) : object_(object) {
  const HeapLock lock;
  HandleList::insert(*this);
}

Handle::~Handle() {
  const HeapLock lock;
  HandleList::remove(*this);
}

Handle::Handle(Handle&& other) noexcept : Handle(std::exchange(other.object_, nullptr)) {}

Handle& Handle::operator=(Handle&& other) noexcept {
  if (this != &other) object_ = std::exchange(other.object_, nullptr);
  return *this;
}

}  // namespace host
