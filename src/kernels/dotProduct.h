// Dot products of buffers of doubles, in the order of the sums: every product is rounded before it is added, lane j
// takes the terms whose index is j modulo four within the full blocks, the lanes are combined, and the remaining terms
// follow in index order. Fewer than four terms are added one by one, starting at +0.0.
#pragma once

// The dot product with the lanes combined as ((L0 + L1) + L2) + L3. Only for processors with AVX2.
double dotProductAvx2(const double* lhs, const double* rhs, unsigned long length);

// The dot product with the lanes combined as (L0 + L1) + (L2 + L3).
double dotProductBaseline(const double* lhs, const double* rhs, unsigned long length);
