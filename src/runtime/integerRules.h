// Integer arithmetic of the language: signed 64-bit values that wrap, division toward zero, and the one conversion
// from doubles. All of it goes through unsigned arithmetic or range tests, so nothing overflows.
#pragma once

#include <limits>

// x op y modulo 2^64.
inline long long wrapAdd(long long x, long long y) {
  return static_cast<long long>(static_cast<unsigned long long>(x) + static_cast<unsigned long long>(y));
}
inline long long wrapSubtract(long long x, long long y) {
  return static_cast<long long>(static_cast<unsigned long long>(x) - static_cast<unsigned long long>(y));
}
inline long long wrapMultiply(long long x, long long y) {
  return static_cast<long long>(static_cast<unsigned long long>(x) * static_cast<unsigned long long>(y));
}
inline long long wrapNegate(long long x) { return wrapSubtract(0, x); }

// x / y toward zero for y != 0. The smallest value divided by -1 wraps to itself; the machine instruction would trap.
inline long long truncatingDivide(long long x, long long y) { return y == -1 ? wrapNegate(x) : x / y; }

// Truncation toward zero; NaN and values outside the signed 64-bit range give the smallest value.
inline long long doubleToInteger(double value) {
  if (value >= -0x1p63 && value < 0x1p63) return static_cast<long long>(value);
  return std::numeric_limits<long long>::min();
}
