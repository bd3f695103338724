// Random programs over all natives; VESK_SEED repeats a run.
#include <cstdlib>

#include "support/program.h"
#include "support/verbs.h"

TEST(Programs, behaveLikeTheModel) {
  const char* chosen = std::getenv("VESK_SEED");
  const unsigned long seed = chosen == nullptr ? 1 : std::strtoul(chosen, nullptr, 10);
  std::printf("seed %lu\n", seed);
  for (unsigned long i = 0; i < (host::stressMode() ? 100 : 400); ++i)
    ASSERT_EQ(runProgram(randomBytes(seed * 1000 + i, 250), i % 2 == 1), "") << "program " << i;
}
