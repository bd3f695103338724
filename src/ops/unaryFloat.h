// The twenty functions of one argument that always give doubles.
#pragma once

#include "kernels/operations.h"

// A new array of doubles in the operand's shape, or null after raising or for a null operand. Raises ValueException
// when any element is outside the function's domain, TypeError for elements that are no numbers. A packed data list of
// an operand without native buffer becomes boxes for good. May allocate; roots the operand.
void* applyNdArrayUnaryFloat(void* operand, NdArrayUnaryFloatOp op);

// The function of one double: the scalar definition. No domain check.
double applyUnaryFloatOp(NdArrayUnaryFloatOp op, double x);
