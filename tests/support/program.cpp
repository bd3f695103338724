#include "support/program.h"

#include <random>

#include "support/catalogue.h"

namespace {

class Program {
 public:
  Program(const std::vector<unsigned char>& bytes, bool withFaults) : bytes_(bytes), withFaults_(withFaults) {}

  std::string run() {
    while (next_ < bytes_.size())
      if (const std::string problem = step() + leftovers(); !problem.empty()) return call_ + ": " + problem;
    return "";
  }

 private:
  unsigned take() { return next_ < bytes_.size() ? bytes_[next_++] : 0; }

  // A scenario of the catalogue, some of its arguments replaced by objects of the same class from earlier calls and by
  // other small integers.
  std::string step() {
    const unsigned high = take(), low = take(), control = take(), nth = 1 + take() % 32;
    const Scenario& scenario = catalogue()[(high << 8 | low) % catalogue().size()];
    Values arguments = makeArguments(scenario);
    call_ = scenario.text();
    for (Value& argument : arguments) {
      const unsigned choice = take();
      if (choice >= 128 && argument.values.empty() && scenario.native->operation->parameters[1] != 'v')
        argument.integer = static_cast<int>(choice % 64) - 16;
      if (argument.object == nullptr || !hasObjectMagic(argument.object)) continue;
      const std::string className = shortTypeName(Vesk_objectTypeName(argument.object));
      const std::vector<void*>& known = pool_[className];
      const bool isShape = scenario.native->operation->parameters == "ooo" && className == "ArrayList";  // not any size
      if (choice >= 128 && !known.empty() && !isShape) argument.object = known[choice % known.size()];
      remember(argument.object);
      call_ += argument.object == nullptr ? "" : std::string(" ") + Vesk_objectTypeName(argument.object);
    }
    if (control % 8 == 0) host::collect();
    Fault fault{(control & 64) != 0 ? Fault::Of::Host : Fault::Of::Native, nth, (control & 32) != 0};
    Outcome outcome;
    const bool fails = withFaults_ && control >= 128;
    const std::string problem = checkCall(*scenario.native, arguments, fails ? &fault : nullptr, &outcome);
    if (void* made = outcome.result.object; made != nullptr && hasObjectMagic(made)) remember(made);
    return problem;
  }

  void remember(void* object) {
    std::vector<void*>& known = pool_[shortTypeName(Vesk_objectTypeName(object))];
    known.push_back(object);
    if (known.size() > 8) known.erase(known.begin());
  }

  const std::vector<unsigned char>& bytes_;
  bool withFaults_;
  std::size_t next_ = 0;
  std::map<std::string, std::vector<void*>> pool_;  // by class; all of it is kept
  std::string call_;
};

}  // namespace

std::string runProgram(const std::vector<unsigned char>& bytes, bool withFaults) {
  const std::string problem = Program(bytes, withFaults).run();
  releaseKept();
  return problem;
}

std::vector<unsigned char> randomBytes(unsigned long seed, std::size_t count) {
  std::mt19937_64 random(seed);
  std::vector<unsigned char> bytes(count);
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
  return bytes;
}
