// The element-wise kernels where results are longer than those of any scenario.
#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

#include "kernels/binaryArithmetic.h"
#include "kernels/elementLoops.h"
#include "kernels/unaryFloat.h"
#include "support/verbs.h"

namespace {

// Special values, halves and their neighbours, and arbitrary bits, so that each comes into every lane.
std::vector<double> samples(unsigned seed) {
  const double specials[] = {0.0, 0.49999999999999994, 5e-324, 0x1p52 + 1, 0x1p53 - 1, 0x1p52 - 0.5, INFINITY, NAN};
  std::mt19937_64 random(seed);
  std::vector<double> values;
  while (values.size() < 4093) {
    const double special = specials[random() % 8];
    const double half = static_cast<double>(random() % 4001) / 2 - 1000;
    const double choices[] = {special, -special, half, std::nextafter(half, special), std::bit_cast<double>(random())};
    values.push_back(choices[random() % 5]);
  }
  return values;
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

}  // namespace
