// The generator behind random arrays.
#include "construction/random.h"

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

TEST(Random, noFillComesTwice) {
  std::set<double> seen;
  for (unsigned long length = 0; length < 40; ++length) {
    std::vector<double> values(length, -1.0);
    fillNdArrayUniformRandom({values.data(), length});
    values.push_back(nextNdArrayUniformRandom());
    for (const double value : values) EXPECT_TRUE(seen.insert(value).second) << length;
  }
}

}  // namespace
