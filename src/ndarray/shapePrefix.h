// The first two extents of a shape, cached in the metadata.
#pragma once

#include "runtime/records.h"

// Recomputes `dim0`, `dim1` and `prefixValid` from `meta.ndim` and the list `meta.shape`. Takes the shape list's lock
// and releases it; never allocates; throws std::system_error. (Exported for the runtime.)
void refreshNdArrayShapePrefix(NdArrayMetadata& meta);
