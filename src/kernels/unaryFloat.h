// The twenty functions of one double: their table, their domains, and their loops over buffers.
#pragma once

#include "kernels/elementLoops.h"
#include "kernels/operations.h"

// One function. The messages are complete: a failure composes nothing.
struct NdArrayUnaryFloatRow {
  NdArrayUnaryFloatOp op;
  NdArrayUnaryLoop* plain;
  NdArrayUnaryLoop* avx2;  // null: there is none, each element is one library call
  // Whether any value lies outside the domain; null: every value has a result. NaN lies in every domain.
  bool (*anyOutside)(const double* values, unsigned long length);
  const char* outsideMessage;
  const char* notNumericMessage;
};

// The operation's row; an unknown code counts as sqrt.
const NdArrayUnaryFloatRow& unaryFloatRow(NdArrayUnaryFloatOp op);

// out[i] = op(in[i]), by the AVX2 kernel where the processor has it and the length is worth it.
void applyUnaryFloat(double* out, const double* in, unsigned long length, NdArrayUnaryFloatOp op);

// The AVX2 kernel; only after ndArrayCanUseAvx2() has answered true. Any length. degrees and radians multiply the
// groups of four by one constant but the remaining elements by the scalar form, so an element's last bit depends on
// its position. `out` and `in` are distinct.
void applyUnaryFloatAvx2(double* out, const double* in, unsigned long length, NdArrayUnaryFloatOp op);

// The form for every processor: the scalar definition, element by element. `out` may be `in`.
void applyUnaryFloatPlain(double* out, const double* in, unsigned long length, NdArrayUnaryFloatOp op);
