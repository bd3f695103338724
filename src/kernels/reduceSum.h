// Sums of buffers of doubles. The order of the additions is part of the result: four lane sums over the full blocks of
// four, their combination, then the remaining elements in index order; fewer than four elements are added one by one.
// Every sum starts at +0.0 and really adds its first element, so a sum of negative zeros is +0.0.
#pragma once

// The sum with the lanes combined as ((L0 + L1) + L2) + L3. Only for processors with AVX2.
double reduceSumAvx2(const double* values, unsigned long length);

// The sum with the lanes combined as (L0 + L1) + (L2 + L3).
double reduceSumBaseline(const double* values, unsigned long length);

// The sum in the order of the processor that runs it.
double reduceSumBuffer(const double* values, unsigned long length);
