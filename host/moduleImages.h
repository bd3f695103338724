// The loaded images whose static and thread-local storage holds roots.
#pragma once

namespace host {

// Visits each writable segment of every registered image and the calling thread's thread-local block of it. Caller
// holds the heap lock.
void forEachModuleSegment(void (*visit)(const char* start, unsigned long bytes));

}  // namespace host
