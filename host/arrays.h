// What an array carries besides its fields: the metadata record and the native storage of doubles.
#pragma once

#include "host/objects.h"

namespace host {

// Gives the object metadata that holds its fields as they are. Throws std::bad_alloc. May collect first.
NdArrayMetadata& attachMetadata(ThreadState& thread, ObjectInstance& object);

// The finalizer of arrays: the native storage lets go of its values.
void releaseArray(ObjectInstance& object);

}  // namespace host
