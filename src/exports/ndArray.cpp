// The natives of vesk.math.NDArray: one-line forwarders to their families, grouped as the language declares them.
#include "construction/fastConstructors.h"
#include "construction/random.h"
#include "exports/exportMacro.h"
#include "ndarray/elementAccess.h"
#include "ops/binaryArithmetic.h"
#include "ops/binaryFloat.h"
#include "ops/unaryFloat.h"
#include "ops/unaryPreserve.h"
#include "reductions/matmul.h"
#include "reductions/sort.h"
#include "reductions/sum.h"

// clang-format off
// Construction.
NDARRAY_EXPORT void  vesk_math_NDArray_init1DFastNative(void* array, long long length, int zeroFill)                                   { initNdArray1D(array, length, zeroFill); }
NDARRAY_EXPORT void  vesk_math_NDArray_initFilledFastNative(void* array, void* shape, void* fill)                                      { initNdArrayFilled(array, shape, fill); }
NDARRAY_EXPORT void* vesk_math_NDArray_fromDoubleBufferFastNative(const char* type, const double* values, long long count, double sum) { return makeNdArrayFromDoubles(type, values, count, sum); }
NDARRAY_EXPORT void* vesk_math_NDArray_random1DFastNative(const char* type, long long length)                                          { return makeRandomNdArray1D(type, length); }
NDARRAY_EXPORT void* vesk_math_NDArray_randomDoubleBufferNative(long long count)                                                       { return makeRandomDoubleBuffer(count); }
NDARRAY_EXPORT void  vesk_math_NDArray_fillRandomNative(void* array)                                                                   { fillNdArrayRandom(array); }

// Element access.
NDARRAY_EXPORT void*  vesk_math_NDArray_getFlatNative(void* array, long long index)                                   { return getNdArrayFlat(array, index); }
NDARRAY_EXPORT void   vesk_math_NDArray_setFlatNative(void* array, long long index, void* value)                      { setNdArrayFlat(array, index, value); }
NDARRAY_EXPORT double vesk_math_NDArray_getDouble1DNative(void* array, long long index)                               { return getNdArrayDouble1D(array, index); }
NDARRAY_EXPORT double vesk_math_NDArray_getDouble2DNative(void* array, long long row, long long column)               { return getNdArrayDouble2D(array, row, column); }
NDARRAY_EXPORT void   vesk_math_NDArray_setDouble1DNative(void* array, long long index, double value)                 { setNdArrayDouble1D(array, index, value); }
NDARRAY_EXPORT void   vesk_math_NDArray_setDouble2DNative(void* array, long long row, long long column, double value) { setNdArrayDouble2D(array, row, column, value); }

// Arithmetic.
NDARRAY_EXPORT void* vesk_math_NDArray__addNative(void* lhs, void* rhs)     { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Add); }
NDARRAY_EXPORT void* vesk_math_NDArray__subNative(void* lhs, void* rhs)     { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Subtract); }
NDARRAY_EXPORT void* vesk_math_NDArray__mulNative(void* lhs, void* rhs)     { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Multiply); }
NDARRAY_EXPORT void* vesk_math_NDArray__divNative(void* lhs, void* rhs)     { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Divide); }
NDARRAY_EXPORT void* vesk_math_NDArray_operator_plus(void* lhs, void* rhs)  { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Add); }
NDARRAY_EXPORT void* vesk_math_NDArray_operator_minus(void* lhs, void* rhs) { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Subtract); }
NDARRAY_EXPORT void* vesk_math_NDArray_operator_mul(void* lhs, void* rhs)   { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Multiply); }
NDARRAY_EXPORT void* vesk_math_NDArray_operator_div(void* lhs, void* rhs)   { return applyNdArrayBinaryArithmetic(lhs, rhs, NdArrayBinaryArithmeticOp::Divide); }

// Functions that keep the element type.
NDARRAY_EXPORT void* vesk_math_NDArray__absNative(void* array)   { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Abs); }
NDARRAY_EXPORT void* vesk_math_NDArray_abs(void* array)          { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Abs); }
NDARRAY_EXPORT void* vesk_math_NDArray__roundNative(void* array) { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Round); }
NDARRAY_EXPORT void* vesk_math_NDArray_round(void* array)        { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Round); }
NDARRAY_EXPORT void* vesk_math_NDArray__floorNative(void* array) { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Floor); }
NDARRAY_EXPORT void* vesk_math_NDArray_floor(void* array)        { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Floor); }
NDARRAY_EXPORT void* vesk_math_NDArray__ceilNative(void* array)  { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Ceil); }
NDARRAY_EXPORT void* vesk_math_NDArray_ceil(void* array)         { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Ceil); }
NDARRAY_EXPORT void* vesk_math_NDArray__truncNative(void* array) { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Trunc); }
NDARRAY_EXPORT void* vesk_math_NDArray_trunc(void* array)        { return applyNdArrayUnaryPreserve(array, NdArrayUnaryPreserveOp::Trunc); }

// Functions of one argument.
NDARRAY_EXPORT void* vesk_math_NDArray__sqrtNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Sqrt); }
NDARRAY_EXPORT void* vesk_math_NDArray_sqrt(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Sqrt); }
NDARRAY_EXPORT void* vesk_math_NDArray__cbrtNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Cbrt); }
NDARRAY_EXPORT void* vesk_math_NDArray_cbrt(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Cbrt); }
NDARRAY_EXPORT void* vesk_math_NDArray__sinNative(void* array)     { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Sin); }
NDARRAY_EXPORT void* vesk_math_NDArray_sin(void* array)            { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Sin); }
NDARRAY_EXPORT void* vesk_math_NDArray__cosNative(void* array)     { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Cos); }
NDARRAY_EXPORT void* vesk_math_NDArray_cos(void* array)            { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Cos); }
NDARRAY_EXPORT void* vesk_math_NDArray__tanNative(void* array)     { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Tan); }
NDARRAY_EXPORT void* vesk_math_NDArray_tan(void* array)            { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Tan); }
NDARRAY_EXPORT void* vesk_math_NDArray__asinNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Asin); }
NDARRAY_EXPORT void* vesk_math_NDArray_asin(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Asin); }
NDARRAY_EXPORT void* vesk_math_NDArray__acosNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Acos); }
NDARRAY_EXPORT void* vesk_math_NDArray_acos(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Acos); }
NDARRAY_EXPORT void* vesk_math_NDArray__atanNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Atan); }
NDARRAY_EXPORT void* vesk_math_NDArray_atan(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Atan); }
NDARRAY_EXPORT void* vesk_math_NDArray__sinhNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Sinh); }
NDARRAY_EXPORT void* vesk_math_NDArray_sinh(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Sinh); }
NDARRAY_EXPORT void* vesk_math_NDArray__coshNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Cosh); }
NDARRAY_EXPORT void* vesk_math_NDArray_cosh(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Cosh); }
NDARRAY_EXPORT void* vesk_math_NDArray__tanhNative(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Tanh); }
NDARRAY_EXPORT void* vesk_math_NDArray_tanh(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Tanh); }
NDARRAY_EXPORT void* vesk_math_NDArray__expNative(void* array)     { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Exp); }
NDARRAY_EXPORT void* vesk_math_NDArray_exp(void* array)            { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Exp); }
NDARRAY_EXPORT void* vesk_math_NDArray__exp2Native(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Exp2); }
NDARRAY_EXPORT void* vesk_math_NDArray_exp2(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Exp2); }
NDARRAY_EXPORT void* vesk_math_NDArray__expm1Native(void* array)   { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Expm1); }
NDARRAY_EXPORT void* vesk_math_NDArray_expm1(void* array)          { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Expm1); }
NDARRAY_EXPORT void* vesk_math_NDArray__logNative(void* array)     { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log); }
NDARRAY_EXPORT void* vesk_math_NDArray_log(void* array)            { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log); }
NDARRAY_EXPORT void* vesk_math_NDArray__log10Native(void* array)   { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log10); }
NDARRAY_EXPORT void* vesk_math_NDArray_log10(void* array)          { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log10); }
NDARRAY_EXPORT void* vesk_math_NDArray__log2Native(void* array)    { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log2); }
NDARRAY_EXPORT void* vesk_math_NDArray_log2(void* array)           { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log2); }
NDARRAY_EXPORT void* vesk_math_NDArray__log1pNative(void* array)   { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log1p); }
NDARRAY_EXPORT void* vesk_math_NDArray_log1p(void* array)          { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Log1p); }
NDARRAY_EXPORT void* vesk_math_NDArray__degreesNative(void* array) { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Degrees); }
NDARRAY_EXPORT void* vesk_math_NDArray_degrees(void* array)        { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Degrees); }
NDARRAY_EXPORT void* vesk_math_NDArray__radiansNative(void* array) { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Radians); }
NDARRAY_EXPORT void* vesk_math_NDArray_radians(void* array)        { return applyNdArrayUnaryFloat(array, NdArrayUnaryFloatOp::Radians); }

// Functions of two arguments.
NDARRAY_EXPORT void* vesk_math_NDArray__atan2Native(void* array, void* other) { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Atan2); }
NDARRAY_EXPORT void* vesk_math_NDArray_atan2(void* array, void* other)        { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Atan2); }
NDARRAY_EXPORT void* vesk_math_NDArray__powNative(void* array, void* other)   { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Pow); }
NDARRAY_EXPORT void* vesk_math_NDArray_pow(void* array, void* other)          { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Pow); }
NDARRAY_EXPORT void* vesk_math_NDArray__hypotNative(void* array, void* other) { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Hypot); }
NDARRAY_EXPORT void* vesk_math_NDArray_hypot(void* array, void* other)        { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Hypot); }
NDARRAY_EXPORT void* vesk_math_NDArray__fmodNative(void* array, void* other)  { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Fmod); }
NDARRAY_EXPORT void* vesk_math_NDArray_fmod(void* array, void* other)         { return applyNdArrayBinaryFloat(array, other, NdArrayBinaryFloatOp::Fmod); }

// Reductions, sorting, linear algebra.
NDARRAY_EXPORT void* vesk_math_NDArray_sumNative(void* array)              { return sumNdArray(array); }
NDARRAY_EXPORT void* vesk_math_NDArray_sum(void* array)                    { return sumNdArray(array); }
NDARRAY_EXPORT void* vesk_math_NDArray_sort(void* array)                   { return sortNdArray(array); }
NDARRAY_EXPORT void  vesk_math_NDArray_sort1DNative(void* array)           { sortNdArray1D(array); }
NDARRAY_EXPORT void* vesk_math_NDArray__matmulNative(void* lhs, void* rhs) { return multiplyNdArrays(lhs, rhs); }
// clang-format on
