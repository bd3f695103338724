// Prints one line per operation whose results are certain: its name and a digest of all that its scenarios give and
// leave behind, to the bit. Two builds of the module, or two processors, compute the same when they print the same.
#include "support/catalogue.h"

namespace {

// Whether the operation leaves values that nobody can know.
bool isUncertain(const std::string& operation) {
  return operation == "initNdArray1D" || (operation.find("Random") != operation.npos && operation != "fillRandomList");
}

}  // namespace

int main() {
  const host::AttachedThread attached;
  std::map<std::string, std::string> seen;  // by operation
  for (const Scenario& scenario : catalogue()) {
    const std::string& operation = scenario.native->operation->name;
    if (isUncertain(operation)) continue;
    Values values = makeArguments(scenario);
    host::seedFastRandom(1);
    const Outcome outcome = callNative(*scenario.native, values);
    std::string& text = seen[operation] += outcome.raised;
    values.push_back(outcome.result);
    World after;
    for (const Value& value : values) text += contentOf(after.see(value.object));
    Ref number = after.make(Node::Kind::Box, "Double");
    number->value = outcome.result.real;
    text += contentOf(number);
    releaseKept();
  }
  for (const auto& [operation, text] : seen)
    std::printf("%s %016zx\n", operation.c_str(), std::hash<std::string>()(text));
}
