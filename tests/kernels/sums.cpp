// Sums, dot products and matrix products: every form against a plain loop in the stated order, bit for bit, which also
// shows a product that is fused into its sum.
#include <cmath>
#include <random>

#include "kernels/cpuDispatch.h"
#include "kernels/dotProduct.h"
#include "kernels/matrixProduct.h"
#include "kernels/reduceSum.h"
#include "support/modelValues.h"

namespace {

// Numbers of many magnitudes, so that any other order shows; one in `rarity` is a zero, an infinity or a NaN.
std::vector<double> samples(std::size_t count, unsigned seed, unsigned rarity) {
  const double specials[] = {-0.0, -0.0, -0.0, 0.0, INFINITY, -INFINITY, NAN};
  std::mt19937_64 random(seed);
  std::vector<double> values(count);
  for (double& value : values) {
    value = std::ldexp(static_cast<double>(random()) - 0x1p63, static_cast<int>(random() % 20) - 70);
    if (random() % rarity == 0) value = specials[random() % 7];
  }
  return values;
}

struct Forms {
  bool avx2;  // the order of the sum
  bool runs;
  decltype(&reduceSumBaseline) sum;
  decltype(&dotProductBaseline) dot;
  decltype(&multiplyMatricesBaseline) multiply;
};
const Forms kForms[] = {
    {false, true, reduceSumBaseline, dotProductBaseline, multiplyMatricesBaseline},
    {true, ndArrayCanUseAvx2(), reduceSumAvx2, dotProductAvx2, multiplyMatricesAvx2},
    {ndArrayCanUseAvx2(), true, reduceSumBuffer, nullptr, multiplyMatrices},
};

TEST(Sums, addInTheStatedOrderAtEveryLength) {
  for (unsigned long length = 0; length < 600; ++length) {
    const unsigned rarity = length % 2 == 0 ? 3 : 1000;
    const std::vector<double> x = samples(length, length, rarity), y = samples(length, length + 9999, rarity);
    std::vector<double> products(length);
    for (unsigned long i = 0; i < length; ++i) products[i] = x[i] * y[i];
    for (const Forms& form : kForms) {
      if (!form.runs) continue;
      ASSERT_TRUE(sameDouble(form.sum(x.data(), length), model::orderedSum(x, form.avx2))) << length;
      if (form.dot == nullptr) continue;
      ASSERT_TRUE(sameDouble(form.dot(x.data(), y.data(), length), model::orderedSum(products, form.avx2))) << length;
    }
  }
}

// Every element is the plain sum over its row and column; nothing is written beside the product.
void expectPlainDots(const MatrixProductShape& shape, unsigned rarity) {
  const auto [rows, inner, columns] = shape;
  const std::vector<double> lhs = samples(rows * inner + 1, 1, rarity), rhs = samples(inner * columns + 1, 2, rarity);
  for (const Forms& form : kForms) {
    if (!form.runs) continue;
    std::vector<double> out(rows * columns + 2, -77.25), expected(out), terms(inner);
    for (unsigned long i = 0; i < rows * columns; ++i) {
      for (unsigned long p = 0; p < inner; ++p) {
        terms[p] = lhs[i / columns * inner + p + 1] * rhs[p * columns + i % columns + 1];
      }
      expected[i + 1] = model::orderedSum(terms, form.avx2);
    }
    form.multiply(out.data() + 1, lhs.data() + 1, rhs.data() + 1, shape);
    expectSameDoubles(out, expected);
    ASSERT_FALSE(testing::Test::HasFailure()) << rows << " x " << inner << " x " << columns;
  }
}

TEST(MatrixProduct, isOneDotProductPerElement) {
  for (unsigned long rows = 1; rows <= 20; ++rows)
    for (unsigned long inner = 0; inner <= 20; ++inner)
      for (unsigned long columns = 1; columns <= 20; ++columns) expectPlainDots({rows, inner, columns}, 50);
}

TEST(MatrixProduct, isTheSameAcrossBlocks) {
  // More rows, more columns and more inner indices than one block holds, never whole tiles.
  for (const MatrixProductShape& shape : {MatrixProductShape{203, 9, 7}, {5, 6, 1043}, {13, 22003, 3}, {197, 67, 519}})
    expectPlainDots(shape, 100000);
}

}  // namespace
