// + - * / over buffers of doubles. Every element is the one correctly rounded result, so all forms agree to the bit;
// a zero divisor gives infinities or NaN. `out` may be the buffer of an operand.
#pragma once

#include "kernels/operations.h"

// out[i] = lhs[i] op rhs[i], by the AVX2 kernel where the processor has it and the length is worth it.
void applyBinaryArithmetic(double* out, const double* lhs, const double* rhs, unsigned long length,
                           NdArrayBinaryArithmeticOp op);

// The AVX2 kernel; only after ndArrayCanUseAvx2() has answered true. Any length.
void applyBinaryArithmeticAvx2(double* out, const double* lhs, const double* rhs, unsigned long length,
                               NdArrayBinaryArithmeticOp op);

// The form for every processor.
void applyBinaryArithmeticPlain(double* out, const double* lhs, const double* rhs, unsigned long length,
                                NdArrayBinaryArithmeticOp op);
