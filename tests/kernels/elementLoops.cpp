// The element-wise kernels: every form at every length, at odd offsets and in place, against independent references.
#include <algorithm>
#include <bit>
#include <cmath>
#include <functional>
#include <random>

#include "kernels/binaryArithmetic.h"
#include "kernels/elementLoops.h"
#include "kernels/unaryFloat.h"
#include "kernels/unaryPreserve.h"
#include "support/verbs.h"

namespace {

constexpr unsigned long kLongest = 4099;
using Kernel = std::function<void(double* out, const double* lhs, const double* rhs, unsigned long length)>;
// The expected element of a run from its operands; `grouped` says that it lies in a full group of four.
using Reference = std::function<double(double x, double y, bool grouped)>;

// Special values, halves and their neighbours, and arbitrary bits, so that each comes into every lane.
std::vector<double> samples(unsigned seed) {
  const double specials[] = {0.0, 0.49999999999999994, 5e-324, 0x1p52 + 1, 0x1p53 - 1, 0x1p52 - 0.5, INFINITY, NAN};
  std::mt19937_64 random(seed);
  std::vector<double> values;
  while (values.size() < kLongest + 4) {
    const double special = specials[random() % 8];
    const double half = static_cast<double>(random() % 4001) / 2 - 1000;
    const double choices[] = {special, -special, half, std::nextafter(half, special), std::bit_cast<double>(random())};
    values.push_back(choices[random() % 5]);
  }
  return values;
}

// Operands start at odd offsets; the elements around the output must stay.
void expectEveryLength(const Kernel& kernel, const Reference& reference) {
  const std::vector<double> x = samples(1), y = samples(2);
  for (unsigned long length = 0; length <= kLongest; length += length < 67 ? 1 : kLongest - 67) {
    std::vector<double> expected(length + 2, -77.25);
    for (unsigned long i = 0; i < length; ++i) expected[i + 1] = reference(x[i + 1], y[i + 3], i < length / 4 * 4);
    std::vector<double> out(length + 2, -77.25);
    kernel(out.data() + 1, x.data() + 1, y.data() + 3, length);
    expectSameDoubles(out, expected);
    std::copy_n(x.data() + 1, length, out.data() + 1);
    kernel(out.data() + 1, out.data() + 1, y.data() + 3, length);
    expectSameDoubles(out, expected);
    ASSERT_FALSE(testing::Test::HasFailure()) << "length " << length;
  }
}

// The plain form everywhere, the AVX2 form and the one that chooses where the processor allows it.
template <class Op>
void expectForms(Op op, auto* plain, auto* avx2, auto* chooser, const Reference& reference) {
  SCOPED_TRACE(static_cast<int>(op));
  const auto kernel = [op](auto* form) -> Kernel {
    return [=](double* out, const double* x, const double* y, unsigned long length) {
      if constexpr (requires { form(out, x, y, length, op); }) form(out, x, y, length, op);
      if constexpr (requires { form(out, x, length, op); }) form(out, x, length, op);
    };
  };
  const Reference single = [&](double x, double y, bool) { return reference(x, y, false); };
  expectEveryLength(kernel(plain), single);
  expectEveryLength(kernel(chooser), ndArrayCanUseAvx2() ? reference : single);
  if (ndArrayCanUseAvx2()) expectEveryLength(kernel(avx2), reference);
}

TEST(ElementKernels, computeEveryElementOfArithmeticWithOneRounding) {
  using Op = NdArrayBinaryArithmeticOp;
  const auto expect = [](Op op, const Reference& reference) {
    expectForms(op, applyBinaryArithmeticPlain, applyBinaryArithmeticAvx2, applyBinaryArithmetic, reference);
  };
  expect(Op::Add, [](double x, double y, bool) { return x + y; });
  expect(Op(-1), [](double x, double y, bool) { return x + y; });
  expect(Op::Subtract, [](double x, double y, bool) { return x - y; });
  expect(Op::Multiply, [](double x, double y, bool) { return x * y; });
  expect(Op::Divide, [](double x, double y, bool) { return x / y; });
}

TEST(ElementKernels, roundLikeTheMathematicsLibraryAndKeepSigns) {
  using Op = NdArrayUnaryPreserveOp;
  using Function = double (*volatile)(double);  // volatile: the compiler must not answer itself
  const Function absolute = [](double x) { return std::bit_cast<double>(std::bit_cast<unsigned long>(x) << 1 >> 1); };
  const std::pair<Op, Function> cases[] = {{Op::Abs, absolute}, {Op::Round, ::round}, {Op::Floor, ::floor},
                                           {Op::Ceil, ::ceil},  {Op::Trunc, ::trunc}, {Op(5), absolute}};
  for (const auto& row : cases)
    expectForms(row.first, applyUnaryPreservePlain, applyUnaryPreserveAvx2, applyUnaryPreserve,
                [&](double x, double, bool) { return row.second(x); });
}

TEST(ElementKernels, convertAnglesInGroupsByOneProduct) {
  using Op = NdArrayUnaryFloatOp;
  constexpr double kPi = 3.141592653589793;
  const Reference root = [](double x, double, bool) { return std::sqrt(x); };
  const std::pair<Op, Reference> cases[] = {
      {Op::Sqrt, root},
      {Op(-1), root},
      {Op::Cbrt, [](double x, double, bool) { return std::cbrt(x); }},
      {Op::Degrees, [](double x, double, bool grouped) { return grouped ? x * 57.29577951308232 : x * 180 / kPi; }},
      {Op::Radians, [](double x, double, bool grouped) { return grouped ? x * 0.017453292519943295 : x * kPi / 180; }}};
  for (const auto& [op, reference] : cases)
    expectForms(op, applyUnaryFloatPlain, applyUnaryFloatAvx2, applyUnaryFloat, reference);
}

// Long results on a multiple of 32 bytes go past the caches, pieces of them do not.
TEST(ElementKernels, computeLongResultsLikeShortOnes) {
  constexpr unsigned long kLength = kShortestStreamedLength + 7, kPiece = 4096;
  const std::vector<double> some = samples(3);
  std::vector<double> in(kLength);
  for (unsigned long i = 0; i < kLength; ++i) in[i] = some[i % 4093];
  const auto expectSame = [&](const auto& kernel) {
    std::vector<double> whole(kLength + 8, -77.25), pieces(kLength, 0);
    double* const out =
        std::find_if(&whole[1], &whole[5], [](double& at) { return std::bit_cast<unsigned long>(&at) % 32 == 0; });
    kernel(out, in.data(), kLength);
    for (unsigned long i = 0; i < kLength; i += kPiece) kernel(&pieces[i], &in[i], std::min(kPiece, kLength - i));
    EXPECT_EQ(out[-1] + out[kLength], 2 * -77.25);
    expectSameDoubles({out, out + kLength}, pieces);
  };
  expectSame([](double* out, const double* x, unsigned long length) {
    applyBinaryArithmetic(out, x, x, length, NdArrayBinaryArithmeticOp::Multiply);
  });
  expectSame([](double* out, const double* x, unsigned long length) {
    applyUnaryFloat(out, x, length, NdArrayUnaryFloatOp::Degrees);
  });
}

TEST(ElementKernels, findAValueOutsideTheDomainWhereverItIs) {
  using Op = NdArrayUnaryFloatOp;
  const std::pair<Op, double> lowest[] = {{Op::Sqrt, -0.0},  {Op::Log1p, -1 + 0x1p-53}, {Op::Asin, -1},
                                          {Op::Acos, -1},    {Op::Log, 5e-324},         {Op::Log10, 5e-324},
                                          {Op::Log2, 5e-324}};
  for (const auto& [op, low] : lowest)
    for (unsigned long length = 1; length < 40; ++length)
      for (unsigned long i = 0; i < length; ++i) {
        SCOPED_TRACE(testing::Message() << static_cast<int>(op) << ": " << i << " of " << length);
        std::vector<double> values(length, 1.0);
        const auto& outside = unaryFloatRow(op).anyOutside;
        values[i] = low;
        EXPECT_FALSE(outside(values.data(), length));
        values[i] = std::nextafter(low, -2.0);
        EXPECT_TRUE(outside(values.data(), length));
        values[i] = 1.0000000000000002;
        EXPECT_EQ(outside(values.data(), length), low == -1);
      }
}

}  // namespace
