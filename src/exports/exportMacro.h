// Marks the natives: C names, visible. The version script lists what the library may export at all.
#pragma once

#define NDARRAY_EXPORT extern "C" __attribute__((visibility("default")))
