// Uniform random doubles in [0, 1): a generator per thread for native buffers, the host's stream for lists.
#pragma once

#include "ndarray/doubleBuffer.h"

// The next double of this thread's generator (xorshift128+ with shifts 23, 17, 26; S. Vigna, "Further scramblings of
// Marsaglia's xorshift generators", 2014), seeded from the clock at its first use.
double nextNdArrayUniformRandom();

// Fills the view in index order from this thread's generator and returns the sum, taken in groups of four. Does not
// touch the generator for an empty view.
double fillNdArrayUniformRandom(NdArrayDoubleBufferView view);

// A new one-dimensional array of the full type name with `length` random values and its sum cached; null after
// raising. May allocate.
void* makeRandomNdArray1D(const char* typeName, long long length);

// Collector memory with `count` random doubles followed by their sum; null after raising. May allocate; nothing
// collects after the block is made, and the caller keeps it alive.
void* makeRandomDoubleBuffer(long long count);

// Overwrites the elements of the array: its buffer when it has one, else its data list through fillRandomList. Nothing
// for null. May allocate.
void fillNdArrayRandom(void* array);

// Stores random values at items 0 to count - 1 of a list of Float or Double elements or of boxes, which grows to
// `count` items where shorter; nothing for null. Raises ValueException for a negative count and TypeError for other
// kinds of list. May allocate; holds the list's lock.
void fillRandomList(void* list, long long count);
