// Raising language exceptions: record, then leave at once; guards release locks and slots on the way out.
#pragma once

#include "runtime/hostOperations.h"

inline constexpr const char* kValueException = "ValueException";
inline constexpr const char* kTypeError = "TypeError";
inline constexpr const char* kIndexException = "IndexException";
inline constexpr const char* kNullException = "NullException";
inline constexpr const char* kZeroDivisionException = "ZeroDivisionException";
inline constexpr const char* kOutOfMemoryError = "OutOfMemoryError";

// Raises and returns the null that a native returning an object hands back.
inline void* raiseNull(const char* exceptionTypeName, const char* message) {
  Vesk_raise(exceptionTypeName, message);
  return nullptr;
}

// Raises and returns the false of a predicate.
inline bool raiseFalse(const char* exceptionTypeName, const char* message) {
  Vesk_raise(exceptionTypeName, message);
  return false;
}
