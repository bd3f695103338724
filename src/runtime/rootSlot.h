// A scoped root slot: the one way in which the module keeps an object alive across a call that may allocate. Slots
// live on the stack only, in scope order, so they are unregistered newest first on every way out.
#pragma once

#include "runtime/hostOperations.h"

class RootSlot {
 public:
  explicit RootSlot(void* object = nullptr) : object_(object) { Vesk_gcRegisterRootSlot(&object_); }
  ~RootSlot() { Vesk_gcUnregisterRootSlot(&object_); }
  RootSlot(const RootSlot&) = delete;
  RootSlot& operator=(const RootSlot&) = delete;

  void set(void* object) { object_ = object; }
  void* get() const { return object_; }
  // The slot itself, for operations that store an object through an out argument.
  void** address() { return &object_; }

 private:
  void* object_;
};
