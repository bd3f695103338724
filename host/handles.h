// The embedder's handles, linked through the handles themselves so that neither making nor dropping one allocates.
#pragma once

#include "host/host.h"

namespace host {

// All under the heap lock.
class HandleList {
 public:
  static void insert(Handle& handle);
  static void remove(Handle& handle);
  static const Handle* first();
  static const Handle* after(const Handle& handle) { return handle.next_; }
};

}  // namespace host
