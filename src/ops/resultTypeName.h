// The full type name of a result whose element type differs from its operand's.
#pragma once

#include <string>

// The operand's array class with `resultElementType` as its only argument, for example
// "vesk.math.NDArray<vesk.Double>". An empty or unqualified array class becomes the canonical one; a short element
// type is qualified with "vesk.". The operand is not null. Raises nothing; throws std::logic_error when the host has
// no type name for it.
std::string ndArrayResultTypeName(void* operand, const std::string& resultElementType);

// The same for doubles, as the element-wise functions ask for it once per call: repeated names cost a comparison.
class NdArrayDoubleResultTypeName {
 public:
  explicit NdArrayDoubleResultTypeName(void* operand);
  NdArrayDoubleResultTypeName(const NdArrayDoubleResultTypeName&) = delete;
  NdArrayDoubleResultTypeName& operator=(const NdArrayDoubleResultTypeName&) = delete;

  // Valid until the next name is asked for on this thread.
  const char* c_str() const { return text_; }

 private:
  std::string computed_;
  const char* text_;
};
