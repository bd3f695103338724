// The full type name of a result whose element type differs from its operand's.
#pragma once

#include <string>

// The operand's array class with `resultElementType` as its only argument, for example
// "vesk.math.NDArray<vesk.Double>". An empty or unqualified array class becomes the canonical one; a short element
// type is qualified with "vesk.". The operand is not null. Raises nothing; throws std::logic_error when the host has
// no type name for it.
std::string ndArrayResultTypeName(void* operand, const std::string& resultElementType);
