// Sorting of one-dimensional arrays in place, wherever their values live. Cached sums stay as they are.
#pragma once

#include "ndarray/doubleBuffer.h"

// Sorts an array of rank 1 ascending and returns it; raises ValueException for any other rank and returns it unsorted;
// null for null. May allocate (a buffer for an NDArray<Double> that has none).
void* sortNdArray(void* array);
// The same without the rank check; nothing for null.
void sortNdArray1D(void* array);

// Ascending: a stable insertion sort up to 32 values (a NaN stays where it is), above that std::sort on the numbers
// with NaNs, in their order, behind them.
void sortNdArrayDoubleBufferAscending(NdArrayDoubleBufferView view);
