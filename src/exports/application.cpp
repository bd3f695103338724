// The summing natives of vesk.Application.
#include "exports/exportMacro.h"
#include "reductions/sum.h"

NDARRAY_EXPORT double vesk_Application_sumNDArrayDoubleNative(void* array) { return sumNdArrayAsDouble(array); }
NDARRAY_EXPORT double vesk_Application_sumNDArrayFloatNative(void* array) { return sumNdArrayAsFloat(array); }
