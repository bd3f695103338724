// Operation codes of the element-wise families, as the natives pass them and the kernels take them. A code outside its
// range counts as the first operation of its family.
#pragma once

#include <cstdint>

enum class NdArrayBinaryArithmeticOp : std::int32_t { Add = 0, Subtract = 1, Multiply = 2, Divide = 3 };

enum class NdArrayUnaryPreserveOp : std::int32_t { Abs = 0, Round = 1, Floor = 2, Ceil = 3, Trunc = 4 };

enum class NdArrayUnaryFloatOp : std::int32_t {
  Sqrt = 0,
  Cbrt = 1,
  Sin = 2,
  Cos = 3,
  Tan = 4,
  Asin = 5,
  Acos = 6,
  Atan = 7,
  Sinh = 8,
  Cosh = 9,
  Tanh = 10,
  Exp = 11,
  Exp2 = 12,
  Expm1 = 13,
  Log = 14,
  Log10 = 15,
  Log2 = 16,
  Log1p = 17,
  Degrees = 18,
  Radians = 19
};

enum class NdArrayBinaryFloatOp : std::int32_t { Atan2 = 0, Pow = 1, Hypot = 2, Fmod = 3 };
