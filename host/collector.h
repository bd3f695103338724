// Mark and sweep. Roots are registered slots, the embedder's handles, and the static and thread-local storage of module
// images; the native stack is never looked at.
#pragma once

namespace host {

// Runs a collection when this thread is the only one that counts; false when it was skipped.
bool collectIfAlone();

extern unsigned long gCollections;  // since the start; written under the heap lock
extern unsigned long gFinalizersRun;

}  // namespace host
