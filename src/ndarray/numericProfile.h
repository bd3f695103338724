// How the elements of a data list are to be read: as Booleans, integers or floating-point values, and under which
// short type name results are boxed. Decided once per list, by its kind or by its first item that is not null.
#pragma once

#include <string>

#include "runtime/records.h"

enum class NdArrayNumericKind : std::int32_t { None = 0, Boolean = 1, Integer = 2, Floating = 3 };

struct NdArrayNumericProfile {
  NdArrayNumericKind kind;
  std::string typeName;
};

// Classifies the list. Caller holds the list lock. Never allocates collector memory and raises nothing; throws
// std::logic_error when the host has no type name for the deciding item.
NdArrayNumericProfile detectNdArrayNumericProfile(const ListData& list);

// Whether the name is exactly one of the eight integer short type names.
bool isIntegerScalarShortType(const std::string& name);

// A boxed item read by the list's kind; null reads as zero under every kind. Never allocate.
long long ndArrayValueToInteger(void* item, NdArrayNumericKind kind);
double ndArrayValueToDouble(void* item, NdArrayNumericKind kind);
