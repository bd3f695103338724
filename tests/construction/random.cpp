// The generator behind random arrays.
#include "construction/random.h"

#include <numeric>
#include <set>

#include "construction/uniformGenerator.h"
#include "support/verbs.h"

namespace {

TEST(Random, stepsAsDefined) {
  UniformGenerator generator{1, 2};
  EXPECT_EQ(generator.nextBits(), (1UL << 23) + 69);
  EXPECT_EQ(generator.s0, 2U);
  EXPECT_EQ(generator.s1, (1UL << 23) + 67);
  EXPECT_EQ(uniformFromBits((1UL << 23) + 69), 0x1p-41);
  EXPECT_EQ(uniformFromBits(~0UL), 1 - 0x1p-53);
}

// Up to seven values, a group of four and its remainder, are summed like a row of numbers.
TEST(Random, fillsContinueTheStreamAndAreSummedInOrder) {
  std::set<double> seen;
  for (unsigned long round = 0; round < 800; ++round) {
    std::vector<double> values(round % 8, -1.0);
    const double sum = fillNdArrayUniformRandom({values.data(), values.size()});
    EXPECT_EQ(sum, std::accumulate(values.begin(), values.end(), 0.0));
    values.push_back(nextNdArrayUniformRandom());
    for (const double value : values) EXPECT_TRUE(seen.insert(value).second) << round;
  }
}

}  // namespace
