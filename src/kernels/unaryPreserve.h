// abs, round, floor, ceil and trunc over buffers of doubles. Every form gives the same results: exact, with the sign
// of the value also on a zero; infinities, NaN and magnitudes from 2^52 on come out as they are (abs clears the sign).
// `out` may be the buffer of the operand.
#pragma once

#include "kernels/elementLoops.h"
#include "kernels/operations.h"

struct NdArrayUnaryPreserveRow {
  NdArrayUnaryPreserveOp op;
  NdArrayUnaryLoop* plain;
  NdArrayUnaryLoop* avx2;
  bool negatesNegativeIntegers;  // else integers are their own results
  const char* notNumericMessage;
};

// The operation's row; an unknown code counts as abs.
const NdArrayUnaryPreserveRow& unaryPreserveRow(NdArrayUnaryPreserveOp op);

// out[i] = op(in[i]), by the AVX2 kernel where the processor has it and the length is worth it.
void applyUnaryPreserve(double* out, const double* in, unsigned long length, NdArrayUnaryPreserveOp op);

// The AVX2 kernel; only after ndArrayCanUseAvx2() has answered true. Any length.
void applyUnaryPreserveAvx2(double* out, const double* in, unsigned long length, NdArrayUnaryPreserveOp op);

// The form for every processor.
void applyUnaryPreservePlain(double* out, const double* in, unsigned long length, NdArrayUnaryPreserveOp op);
