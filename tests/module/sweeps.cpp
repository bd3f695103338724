// When memory runs out, at any allocation: a stated exception or std::bad_alloc, nothing held, nothing changed that
// should not be, and the same call goes through afterwards. And integers at the ends of their range.
// Nearly the last file by name, so nearly the last to run: the many shapes that come up here stay in the module's
// cache, and every collection afterwards has them to mark.
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

// Around the powers of two where widths and limits end.
std::vector<long long> ends() {
  constexpr long long kMax = std::numeric_limits<long long>::max();
  std::vector<long long> values{kMax, kMax - 1, -kMax, -kMax - 1};
  for (const int exponent : {0, 1, 5, 8, 31, 32, 61, 62})
    for (const long long offset : {-1, 0, 1}) values.push_back((1LL << exponent) + offset);
  for (const int exponent : {0, 1, 5, 32}) values.push_back(-(1LL << exponent));
  return values;
}

// What there is no memory for is only tried, not expected: the model has no limit.
bool isTooMuch(const std::string& raised) {
  return raised == "std::bad_alloc" || raised == "std::length_error" || raised.rfind("OutOfMemoryError: ", 0) == 0;
}

// Makes it the argument, or what the array says of itself; false when there is no such place.
bool put(long long end, Value& argument, char parameter, const std::string& place) {
  argument.integer = end;
  if (place == "argument") return parameter == 'l' || parameter == 'i';
  void* array =
      parameter == 'o' && argument.object != nullptr && hasObjectMagic(argument.object) ? argument.object : nullptr;
  if (array == nullptr || Vesk_getField_ptr(array, "_shape") == nullptr) return false;
  if (place == "_shape")
    return Vesk_setField_ptr(array, "_shape", boxList("Long", {1, static_cast<Number>(end)})), true;
  return Vesk_setField_i64(array, place.c_str(), end), true;
}

// One build takes all scenarios; with a sanitizer or clang one operation of each family has to do, and a part of those
// with a collection at every allocation.
#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
constexpr bool kTakesAll = false;
constexpr long kOneOf = 10;
#else
constexpr bool kTakesAll = true;
constexpr long kOneOf = 5;
#endif
bool isOneOf(const Scenario& scenario, long n) {
  return scenario.inSweeps && (&scenario - catalogue().data()) % n == 0;
}
bool isSwept(const Scenario& scenario) {
  return host::stressMode() ? isOneOf(scenario, kOneOf) : kTakesAll || scenario.inSweeps;
}
bool isTakenToTheEnds(const Scenario& scenario) {
  return isOneOf(scenario, host::stressMode() ? 4 * kOneOf : kTakesAll ? 1 : 2);
}

}  // namespace

TEST(Failures, leaveNothingBehindAndTheCallCanBeRepeated) {
  unsigned long rounds = 0;
  for (const Scenario& scenario : catalogue()) {
    if (!isSwept(scenario)) continue;
    for (const Fault::Of of : {Fault::Of::Host, Fault::Of::Native})
      for (const bool forEver : {false, true}) rounds += sweep(scenario, of, forEver);
    ASSERT_EQ(host::checkHeap().value_or(""), "") << scenario.text();
  }
  std::printf("%lu rounds\n", rounds);
}

TEST(Failures, integersAtTheEndsOfTheirRange) {
  host::setHeapLimit(256UL << 20);
  unsigned long calls = 0;
  for (const Scenario& scenario : catalogue())
    for (std::size_t i = 0; isTakenToTheEnds(scenario) && i < scenario.arguments.size(); ++i)
      for (const std::string place : {"argument", "_size", "_ndim", "_shape"})
        for (const long long end : ends()) {
          const auto make = [&] {
            Values arguments = makeArguments(scenario);
            for (Value& argument : arguments)
              if (!argument.values.empty()) argument.values.resize(300);
            return put(end, arguments[i], scenario.native->operation->parameters[i], place) ? arguments : Values{};
          };
          const Values arguments = make();
          if (arguments.empty()) break;
          const std::string raised = callNative(*scenario.native, arguments).raised;
          const bool isExpected = calls++ % 4 == 0 && !isTooMuch(raised);  // the model is slow
          EXPECT_EQ(isExpected ? checkCall(*scenario.native, make()) : leftovers(), "")
              << scenario.text() << " with " << end << ": " << raised;
          releaseKept();
        }
  host::setHeapLimit(64UL << 30);
  std::printf("%lu boundary calls\n", calls);
}

TEST(Failures, aListThatCouldNotBeBoxedIsReadAsPacked) {
  const Values arguments{{.object = makeObject("Float packed 1,2,3")}};
  Fault third{Fault::Of::Host, 3};
  EXPECT_EQ(checkCall(nativeOf("abs"), arguments, &third), "");
  EXPECT_EQ(checkCall(nativeOf("sumNdArray"), arguments), "");
}

// An array for whose values there never was room has the list that all empty arrays share, and needs one of its own
// once something is written into it.
TEST(Failures, theListThatAllEmptyArraysShareIsNotWritten) {
  for (const char* writer : {"setNdArrayFlat", "fillNdArrayRandom"}) {
    Values made;
    Outcome outcome;
    for (Fault fault; outcome.raised.rfind("TypeError", 0) != 0 && fault.nth < 100; ++fault.nth) {
      made = {{.object = makeObject("Double none")}, {.object = makeObject("list Int packed 5")}, {}};
      EXPECT_EQ(checkCall(nativeOf("initNdArrayFilled"), made, &fault, &outcome), "");
    }
    ASSERT_EQ(outcome.raised.rfind("TypeError", 0), 0U);
    Fault noRoom;
    EXPECT_EQ(checkCallAlone(nativeOf(writer), {made[0], {.integer = 3}, {}}, &noRoom), "") << writer;
    EXPECT_TRUE(noRoom.happened);
  }
}
