// What the machine allows: the least work that each family cannot do without, written as plainly as the processor likes
// it. AVX2 throughout, never a fused multiply-add.
#pragma once

namespace bench {

// Moves the bytes of a function of one operand and of two: out[i] = in[i]; out[i] = lhs[i] + 3 * rhs[i].
void copyLanes(double* out, const double* in, unsigned long length);
void triadLanes(double* out, const double* lhs, const double* rhs, unsigned long length);

// One four-lane accumulator over the values: the serial chain that a sum of fixed order cannot shorten.
double addChain(const double* values, unsigned long length);

// `products` separate multiplications and additions on four lanes from registers, as many chains as the processor
// overlaps.
void multiplyAddFromRegisters(unsigned long products);
// `length` divisions and square roots on four lanes from registers.
void divideFromRegisters(unsigned long length);
void squareRootFromRegisters(unsigned long length);

// The steps of one xorshift128+ generator with the conversion to [0, 1), stored in order.
void generatorChain(double* out, unsigned long length);

// Out of line and empty, with the arguments of the element accessors.
double emptyCall(void* array, long long index);

}  // namespace bench
