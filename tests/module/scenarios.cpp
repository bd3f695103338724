// Every scenario of the catalogue against the slow model.
#include <set>

#include "support/catalogue.h"

// While a native runs, nobody but the native keeps its arguments alive: its caller may have them in registers only.
TEST(Scenarios, doWhatTheModelExpects) {
  for (const Scenario& scenario : catalogue()) {
    Operation alone = *scenario.native->operation;
    alone.call = [&](void* entry, const Values& arguments) {
      releaseKept();
      return scenario.native->operation->call(entry, arguments);
    };
    const Native native{scenario.native->name, &alone, scenario.native->entry};
    EXPECT_EQ(checkCall(native, makeArguments(scenario)), "") << scenario.text();
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
