// ArrayLists: their records, and the mutexes of those that have one.
#pragma once

#include "host/objects.h"

namespace host {

// An empty object list without a mutex, its stores inline.
void initializeList(ListRecord& record);
// The list is dead: its mutex goes. Caller holds the heap lock.
void releaseList(ListRecord& record);

// The locks of live lists that this thread holds.
unsigned long listLocksHeldByThisThread();

}  // namespace host
