// Every scenario of the catalogue against the slow model.
#include <set>

#include "support/catalogue.h"

TEST(Scenarios, doWhatTheModelExpects) {
  for (const Scenario& scenario : catalogue()) {
    EXPECT_EQ(checkCallAlone(*scenario.native, makeArguments(scenario)), "") << scenario.text();
    EXPECT_EQ(leftovers(), "") << scenario.text();
    releaseKept();
  }
  std::printf("%zu scenarios\n", catalogue().size());
}

TEST(Scenarios, callEveryNative) {
  std::set<std::string> called;
  for (const Scenario& scenario : catalogue()) called.insert(scenario.native->name);
  EXPECT_EQ(natives().size(), 86u);
  for (const Native& native : natives()) EXPECT_EQ(called.count(native.name), 1u) << native.name;
}
