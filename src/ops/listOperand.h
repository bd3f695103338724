// Operands and results of the list ways: opening an operand's data list, reading its elements in blocks into plain
// buffers, and boxing blocks of results. The blocks let every family run the loops that it has for native buffers, so
// no operation is chosen, and no element kind decided, per element.
#pragma once

#include <algorithm>

#include "ndarray/numericProfile.h"
#include "runtime/rootSlot.h"

inline constexpr const char* kInvalidInstance = "Invalid NDArray instance";
inline constexpr const char* kShapeMismatch = "shape mismatch";

// Elements handled at a time; a block of doubles takes 2 KiB of stack.
inline constexpr unsigned long kBlockLength = 256;

// Calls `step(start, length)` for the blocks of 0 to count - 1 in order, until one returns false; whether none did.
template <class Step>
bool forEachBlock(unsigned long count, Step step) {
  for (unsigned long start = 0; start < count; start += kBlockLength) {
    if (!step(start, std::min(kBlockLength, count - start))) return false;
  }
  return true;
}

// The storage of the array's data list, with the list object kept in `list`. Without a list raises TypeError and
// returns null.
ListData* openDataList(RootSlot& list, void* array);

// Turns a packed list into boxes for good and classifies the items. Caller holds the list lock and keeps the list
// rooted. May allocate.
NdArrayNumericProfile classifyItems(ListData& list);

// Elements `start` to `start + length - 1` of an object list or a packed one as doubles, items by `kind`. Null items
// are zero. Caller holds the list lock. Never allocate.
void readDoubles(double* out, const ListData& list, unsigned long start, unsigned long length, NdArrayNumericKind kind);
// The same as signed 64-bit integers.
void readIntegers(long long* out, const ListData& list, unsigned long start, unsigned long length,
                  NdArrayNumericKind kind);

// The values of the second operand, given with its record, of an operation over native buffers of `count` values: its
// own buffer, or, when it has none, the items of its data list read into `scratch`. Raises TypeError (`notNumeric` for
// items that are no numbers) or ValueException and returns null. May allocate: the operand is rooted. Holds its list's
// lock meanwhile.
const double* secondOperandValues(void* operand, ObjectInstance* instance, unsigned long count, double* scratch,
                                  const char* notNumeric);

// Stores one new box per value into items `start` and following of a result list: Double boxes, or boxes of the named
// short type, where "Float" rounds to single precision. May allocate: the list is rooted and its lock held. Throws
// std::bad_alloc.
void storeDoubleBoxes(ListData& out, unsigned long start, const double* values, unsigned long length);
void storeBoxes(ListData& out, unsigned long start, const double* values, unsigned long length,
                const std::string& typeName);
void storeBoxes(ListData& out, unsigned long start, const long long* values, unsigned long length,
                const std::string& typeName);
