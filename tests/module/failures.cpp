// When memory runs out, at any allocation: a stated exception or std::bad_alloc, nothing held, nothing changed that
// should not be, and the same call goes through afterwards. And integers at the ends of their range.
#include <algorithm>
#include <limits>

#include "support/catalogue.h"

namespace {

// Fails the first, second, ... allocation of the scenario's call until the call gets through.
unsigned long sweep(const Scenario& scenario, Fault::Of of, bool forEver) {
  for (unsigned long nth = 1;; ++nth) {
    Fault fault{of, nth, forEver};
    const Values arguments = makeArguments(scenario);
    std::string problem = checkCall(*scenario.native, arguments, &fault);
    if (fault.happened) problem += checkCall(*scenario.native, arguments);
    problem += leftovers();
    EXPECT_EQ(problem, "") << scenario.text() << (forEver ? " from allocation " : " at allocation ") << nth;
    releaseKept();
    if (!fault.happened || !problem.empty()) return nth;
  }
}

constexpr long long kMax = std::numeric_limits<long long>::max();
constexpr long long kEnds[] = {-kMax - 1,
                               -kMax,
                               -(1LL << 32),
                               -33,
                               -2,
                               -1,
                               0,
                               1,
                               2,
                               3,
                               31,
                               32,
                               33,
                               255,
                               256,
                               1LL << 31,
                               (1LL << 32) - 1,
                               1LL << 32,
                               (1LL << 61) - 1,
                               1LL << 61,
                               1LL << 62,
                               kMax - 1,
                               kMax};

void expectCleanOutcome(const Native& native, const Values& arguments, const std::string& what) {
  const std::string raised = callNative(native, arguments).raised;
  const bool isStated = raised.empty() || raised.find("Exception: ") != raised.npos ||
                        raised.find("Error: ") != raised.npos || raised == "std::bad_alloc" ||
                        raised == "std::logic_error";
  EXPECT_TRUE(isStated && raised.find(" and ") == raised.npos) << what << ": " << raised;
  EXPECT_EQ(leftovers(), "") << what;
}

}  // namespace

TEST(Failures, leaveNothingBehindAndTheCallCanBeRepeated) {
  unsigned long rounds = 0;
  for (const Scenario& scenario : catalogue()) {
    if (!scenario.inSweeps) continue;
    for (const Fault::Of of : {Fault::Of::Host, Fault::Of::Native})
      for (const bool forEver : {false, true}) rounds += sweep(scenario, of, forEver);
    ASSERT_EQ(host::checkHeap().value_or(""), "") << scenario.text();
  }
  std::printf("%lu rounds\n", rounds);
}

TEST(Failures, integersAtTheEndsOfTheirRange) {
  host::setHeapLimit(256UL << 20);
  for (const Scenario& scenario : catalogue())
    for (std::size_t i = 0; scenario.inSweeps && i < scenario.arguments.size(); ++i) {
      const char parameter = scenario.native->operation->parameters[i];
      if (parameter != 'l' && parameter != 'i') continue;
      for (const long long end : kEnds) {
        Values arguments = makeArguments(scenario);
        arguments[i].integer = end;
        for (Value& argument : arguments)
          if (!argument.values.empty()) argument.values.resize(256);
        expectCleanOutcome(*scenario.native, arguments, scenario.text() + " with " + std::to_string(end));
        releaseKept();
      }
    }
  host::setHeapLimit(64UL << 30);
}

// Arrays whose rank, size or extents say what their data does not.
TEST(Failures, fieldsAtTheEndsOfTheirRange) {
  host::setHeapLimit(256UL << 20);
  for (const Native& native : natives()) {
    const std::string& parameters = native.operation->parameters;
    if (parameters[0] != 'o' || native.operation->name == "fillRandomList") continue;
    for (const char* form : {"Double packed 1,2,3,4 shape=2x2", "Int packed 1,2,3,4 shape=4 meta", "Int boxes 1,2,3,4"})
      for (const char* field : {" size=", " ndim=", " shapelist=1,"})
        for (const long long end : kEnds) {
          const std::string text = form + (field + std::to_string(end));
          Values arguments(parameters.size(), {.integer = 1});
          for (std::size_t i = 0; i < parameters.size(); ++i)
            if (parameters[i] == 'o') arguments[i].object = makeObject(text);
          if (native.operation->name == "initNdArrayFilled")
            arguments[1].object = Vesk_getField_ptr(arguments[0].object, "_shape");
          expectCleanOutcome(native, arguments, native.name + " of " + text);
          releaseKept();
        }
  }
  host::setHeapLimit(64UL << 30);
}

TEST(Failures, aListThatCouldNotBeBoxedIsReadAsPacked) {
  const Values arguments{{.object = makeObject("Float packed 1,2,3")}};
  const auto native = [](const std::string& operation) {
    const auto named = [&](const Native& candidate) { return candidate.operation->name == operation; };
    return *std::find_if(natives().begin(), natives().end(), named);
  };
  Fault third{Fault::Of::Host, 3};
  EXPECT_EQ(checkCall(native("abs"), arguments, &third), "");
  EXPECT_EQ(checkCall(native("sumNdArray"), arguments), "");
}
