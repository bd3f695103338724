// The generator behind random arrays: its definition, and the order of the sums of its fills.
#include "construction/random.h"

#include <algorithm>

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

// The state moves on between fills: no value of 53 random bits comes twice.
TEST(Random, fillsContinueTheStreamAndSumInGroupsOfFour) {
  std::vector<double> seen;
  for (unsigned long length = 0; length < 40; ++length) {
    std::vector<double> values(length, -1.0);
    const double filledSum = fillNdArrayUniformRandom({values.data(), length});
    double sum = 0.0;
    for (unsigned long i = 0; i < length; ++i) {
      const bool grouped = i < length / 4 * 4;
      if (grouped && i % 4 == 3) sum += ((values[i - 3] + values[i - 2]) + values[i - 1]) + values[i];
      if (!grouped) sum += values[i];
      ASSERT_TRUE(values[i] >= 0.0 && values[i] < 1.0);
    }
    EXPECT_EQ(filledSum, sum) << length;
    values.push_back(nextNdArrayUniformRandom());
    seen.insert(seen.end(), values.begin(), values.end());
  }
  std::sort(seen.begin(), seen.end());
  EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end()) << "a stretch of the stream came twice";
}

}  // namespace
