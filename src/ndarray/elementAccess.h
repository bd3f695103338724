// Reading and writing single elements by flat, one- and two-dimensional index. Arrays of doubles are served from their
// ready buffer by a few field reads; every other case goes through the buffer's creation and then the boxed list.
// Writes keep a valid running sum up to date. All raise IndexException for a null array and an index outside.
#pragma once

// The element as an object (for doubles a new box, for an object list the item itself), or null after raising. Flat
// indices do not wrap. May allocate; holds the data list's lock while it boxes.
void* getNdArrayFlat(void* array, long long index);

// Stores the element. Arrays of doubles take any number and raise TypeError for anything else; boxed lists take any
// object, and grow to the array's size or to the index. May allocate.
void setNdArrayFlat(void* array, long long index, void* value);

// Reads one element by flat index into `out`; `out` is unchanged when this raises or meets a null item. May allocate.
void readNdArrayDoubleFlat(void* array, long long flatIndex, double& out);
// Writes one element by flat index. May allocate.
void writeNdArrayDoubleFlat(void* array, long long flatIndex, double value);

// By index, wrapping negative ones once; 0.0 after raising. ValueException when the rank is not the accessor's. For a
// ready buffer they read the metadata and the storage record only, without allocation or lock.
double getNdArrayDouble1D(void* array, long long index);
double getNdArrayDouble2D(void* array, long long row, long long column);
void setNdArrayDouble1D(void* array, long long index, double value);
void setNdArrayDouble2D(void* array, long long row, long long column, double value);
