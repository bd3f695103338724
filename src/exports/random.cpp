// The native of vesk.math.Random.
#include "construction/random.h"

#include "exports/exportMacro.h"

NDARRAY_EXPORT void vesk_math_Random_fillRandom(void* list, long long count) { fillRandomList(list, count); }
