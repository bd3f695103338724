// What tests say: a few verbs that make language values and look at them. Whatever a verb makes stays rooted until the
// test ends (on other threads until releaseKept).
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/host.h"

// Holds every value of every element type exactly: 64-bit integers of either sign, and doubles.
using Number = long double;
using Numbers = std::vector<Number>;

inline constexpr const char* kDoubleArray = "vesk.math.NDArray<vesk.Double>";
inline constexpr const char* kIntArray = "vesk.math.NDArray<vesk.Int>";

// Roots the object until the test ends, and returns it.
void* keep(void* object);
void releaseKept();

// ---- Values. Numbers are stored as the element type stores them; they must lie in its range.

void* box(const std::string& shortTypeName, Number value);
void* objectList(const std::vector<void*>& items);
void* boxList(const std::string& shortTypeName, const Numbers& values);  // one fresh box per value
void* packedList(unsigned char kind, const Numbers& values, bool named = true);

// ---- Arrays. Without a shape they are one-dimensional.

// An array as language code makes one: its fields set, no metadata record, no native storage.
void* arrayOver(void* dataList, std::vector<long long> shape = {}, const char* typeName = kIntArray);
// An array as the fast constructors make one: metadata, an empty data list and a ready buffer without a valid sum.
void* doubles(const std::vector<double>& values, std::vector<long long> shape = {});
void* boxedInts(const Numbers& values, std::vector<long long> shape = {});
// Gives an array its metadata record, filled from its fields.
void addMetadata(void* array);

// ---- Looking.

ListData& dataOf(void* array);  // the storage of its data list
// The elements of an array (its ready buffer, else its data list) or of a list; null items read as 0.
std::vector<double> valuesOf(void* arrayOrList);
// Equal to the bit; all NaNs are one value.
bool sameDouble(double x, double y);
void expectSameDoubles(const std::vector<double>& actual, const std::vector<double>& expected);

// Root slots and a pending exception that were left behind; empty when nothing was.
std::string leftovers();
