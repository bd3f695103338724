// Product of two two-dimensional arrays of doubles.
#pragma once

// A new m x n array of the receiver's type, m x k times k x n, with its sum cached; or null after raising or for a
// null receiver. Operands whose buffers disagree with their shapes are refused before anything is allocated. Raises
// TypeError and ValueException. May allocate; roots both operands. Throws std::bad_alloc.
void* multiplyNdArrays(void* lhs, void* rhs);
