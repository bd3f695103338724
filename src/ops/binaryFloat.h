// atan2, pow, hypot and fmod between an array and a second array of the same shape or one number.
#pragma once

#include "kernels/operations.h"

// A new array of doubles in the receiver's shape, element i being op(receiver[i], other[i] or the number), or null
// after raising or for a null receiver. A receiver without native buffer is read from its list, and so is an array
// `other` then, even when it has a buffer. Raises TypeError and ValueException. May allocate; roots both operands.
void* applyNdArrayBinaryFloat(void* receiver, void* other, NdArrayBinaryFloatOp op);

// The function of two doubles: the scalar definition.
double applyBinaryFloatOp(NdArrayBinaryFloatOp op, double x, double y);
