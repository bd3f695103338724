// The operators + - * / between two arrays of equal shape.
#pragma once

#include "kernels/operations.h"

// A new array of the left operand's type, shape and strides with lhs[i] op rhs[i], or null after raising or for a null
// `lhs`. Over native buffers when the left operand is an NDArray<Double>; else over the data lists of both operands
// (never the right one's buffer), packed when both are packed numbers, boxed otherwise; a packed operand of the boxed
// way becomes boxes for good. Raises TypeError, ValueException or ZeroDivisionException. May allocate; roots both
// operands.
void* applyNdArrayBinaryArithmetic(void* lhs, void* rhs, NdArrayBinaryArithmeticOp op);
