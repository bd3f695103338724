// What the scenarios do not reach: unknown operation codes, the whole range of the library functions, odd packed lists
// and result type names.
#include <cmath>
#include <random>

#include "ops/binaryArithmetic.h"
#include "ops/binaryFloat.h"
#include "ops/resultTypeName.h"
#include "ops/unaryFloat.h"
#include "support/verbs.h"

namespace {

using Arithmetic = NdArrayBinaryArithmeticOp;

// Finite values of all magnitudes, dense around the places where the functions have their domains and turns.
std::vector<double> wideSamples(unsigned seed) {
  std::vector<double> values = {0.0, -0.0, 1.0, -1.0, 0.5, 27.0, 1e300, -1074.0, 710.0, 1e22, 5e-324, INFINITY, NAN};
  std::mt19937_64 random(seed);
  std::uniform_real_distribution<double> unit(-1, 1);
  for (int i = 0; i < 4000; ++i) values.push_back(std::ldexp(unit(random), i % 8 < 4 ? i % 4 : i % 80 - 40));
  return values;
}

TEST(FloatFunctions, areTheLibrarysOverTheirWholeRange) {
  using Function = double (*volatile)(double);  // volatile: the compiler must not answer itself
  const Function functions[] = {::sqrt, ::cbrt, ::sin, ::cos,  ::tan,   ::asin, ::acos,  ::atan, ::sinh,
                                ::cosh, ::tanh, ::exp, ::exp2, ::expm1, ::log,  ::log10, ::log2, ::log1p};
  using Function2 = double (*volatile)(double, double);
  const Function2 functions2[] = {::atan2, ::pow, ::hypot, ::fmod};
  const std::vector<double> x = wideSamples(1), y = wideSamples(2);
  for (std::size_t i = 0; i < x.size(); ++i) {
    SCOPED_TRACE(testing::Message() << x[i] << ", " << y[i]);
    for (int op = 0; op < 18; ++op)
      EXPECT_TRUE(sameDouble(applyUnaryFloatOp(NdArrayUnaryFloatOp(op), x[i]), functions[op](x[i]))) << op;
    for (int op = 0; op < 4; ++op)
      EXPECT_TRUE(sameDouble(applyBinaryFloatOp(NdArrayBinaryFloatOp(op), x[i], y[i]), functions2[op](x[i], y[i])))
          << op;
  }
}

TEST(ElementFamilies, takeAnUnknownOperationForTheirFirst) {
  void* words = arrayOver(objectList({keep(host::newString("four"))}));
  for (const int code : {-1, 20, 1 << 30}) {
    void* sum = applyNdArrayBinaryArithmetic(boxedInts({4}), boxedInts({5}), Arithmetic(code));
    expectSameDoubles(valuesOf(keep(sum)), {9});
    expectRaised("TypeError", "+ expects a NDArray operand",
                 [&] { applyNdArrayBinaryArithmetic(words, nullptr, Arithmetic(code)); });
    expectRaised("TypeError", "atan2 expects numeric values",
                 [&] { applyNdArrayBinaryFloat(words, words, NdArrayBinaryFloatOp(code)); });
  }
}

TEST(PackedArithmetic, convertsToWhatTheResultListHolds) {
  void* ints = packedList(5, {7, 7, 7, 7});
  void* mixed = packedList(10, {2.5L, -9.9L, 1e300L, NAN});
  const auto sum = [&](void* left, void* right) {
    return valuesOf(keep(applyNdArrayBinaryArithmetic(arrayOver(left), arrayOver(right), Arithmetic::Add)));
  };
  expectSameDoubles(sum(ints, mixed), {9, -2, 0, 0});  // low bits of the smallest 64-bit integer
  static const std::string kNames[] = {"Float", "Boolean"};
  getListData(ints)->elementTypeName = RuntimeTypeName(&kNames[0]);
  expectSameDoubles(sum(ints, packedList(5, {1, 2, 0x1000002, -7})), {8, 9, 16777224, 0});
  getListData(ints)->elementTypeName = RuntimeTypeName(&kNames[1]);
  expectRaised("TypeError", "cannot initialize primitive NDArray result",
               [&] { applyNdArrayBinaryArithmetic(arrayOver(ints), arrayOver(ints), Arithmetic::Add); });
}

TEST(ResultTypeName, keepsTheArrayClassAndReplacesItsArguments) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"vesk.math.NDArray<vesk.Int>", "Double", "vesk.math.NDArray<vesk.Double>"},
      {"vesk.math.NDArray<Pair<Int>>", "vesk.Float", "vesk.math.NDArray<vesk.Float>"},
      {"NDArray", "", "vesk.math.NDArray<vesk.>"},
      {"<Int>", "Double", "vesk.math.NDArray<vesk.Double>"},
      {"geo.NDArray<Float>", "Double", "geo.NDArray<vesk.Double>"},
      {"NDArrayView", "Double", "NDArrayView<vesk.Double>"}};
  for (const auto& [name, element, expected] : cases)
    EXPECT_EQ(ndArrayResultTypeName(keep(Vesk_allocObject(name)), element), expected);
}

}  // namespace
