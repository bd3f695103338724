// abs, round, floor, ceil and trunc: results keep the operand's type, and integer items are shared, not copied.
#pragma once

#include "kernels/operations.h"

// A new array of the operand's type and shape, or null after raising TypeError or for a null operand. A packed data
// list of an operand without native buffer becomes boxes for good. May allocate; roots the operand.
void* applyNdArrayUnaryPreserve(void* array, NdArrayUnaryPreserveOp op);

// The operation on one double: the scalar definition.
double applyUnaryPreserveOp(NdArrayUnaryPreserveOp op, double x);
