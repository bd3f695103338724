// Mark and sweep. Roots are registered slots, the embedder's handles, and the static and thread-local storage of module
// images; the native stack is never looked at.
#pragma once

#include <cstdint>

namespace host {

// Runs a collection when this thread is the only one that counts; false when it was skipped.
bool collectIfAlone();

// During a collection: an address inside a block keeps all of it alive.
void markAddress(std::uintptr_t address);
// Marks what the embedder's handles hold.
void markHandles();

extern unsigned long gCollections;  // since the start; written under the heap lock
extern unsigned long gFinalizersRun;
// Of the last collection, under the heap lock: what it had to read, and what was charged when it had ended.
extern unsigned long gScannedBytes;
extern unsigned long gKeptBytes;
// The latest large request since then; under the heap lock.
extern unsigned long gLatestLargeBytes;

}  // namespace host
