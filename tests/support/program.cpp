#include "support/program.h"

#include <random>

#include "support/catalogue.h"

namespace {

constexpr const char* kStart[] = {"Double buffer 1,-2,0.5,3,4 meta",
                                  "Double packed 1..40",
                                  "Double boxes 1,null,2 lock",
                                  "Int packed 3,-1,2,7,5 lock",
                                  "Int boxes 5,Long:4,null,3,1 meta",
                                  "Int one 7,7,7,7,7",
                                  "Float packed 0.5,-1.5,nan,2,1 meta",
                                  "Float boxes 0.5,0.25,1 lock",
                                  "Byte unnamed 200,1,2 lock",
                                  "Boolean packed 0,1,2",
                                  "ULong packed 18446744073709551615,2,3",
                                  "Short boxes=Boolean 1,0,1",
                                  "Double buffer 1..6 shape=2x3 meta sum=21",
                                  "Double packed 1..6 shape=3x2",
                                  "Int boxes 1..6 shape=2x3 lock",
                                  "Int boxes text,1,2",
                                  "Double none size=3",
                                  "geo.NDArrayView<vesk.Float> boxes 1,2,3",
                                  "Double buffer -",
                                  "null"};
constexpr const char* kOthers[] = {"box Int 3",
                                   "box Double 0.5",
                                   "box Boolean 1",
                                   "text",
                                   "null",
                                   "list Int packed 2,3",
                                   "list Float packed 1,2 lock",
                                   "list Double packed -",
                                   "list Int boxes 4",
                                   "list Int boxes 1,2,2"};
constexpr double kReals[] = {0, -0.0, 1, -2.5, 1e300, 0.1, 7, 1e-310};

class Program {
 public:
  Program(const std::vector<unsigned char>& bytes, bool withFaults) : bytes_(bytes), withFaults_(withFaults) {}

  std::string run() {
    while (next_ < bytes_.size()) {
      if (const std::string problem = step(); !problem.empty()) return log_ + problem;
      if (const std::string left = leftovers(); !left.empty()) return log_ + left;
    }
    return "";
  }

 private:
  unsigned take() { return next_ < bytes_.size() ? bytes_[next_++] : 0; }
  template <class T, std::size_t N>
  T oneOf(const T (&table)[N]) {
    return table[take() % N];
  }

  // An object seen before or a new one; `wanted` is the class that the position needs, or empty.
  void* object(bool isArray, bool isList) {
    const unsigned choice = take();
    const auto fits = [&](void* candidate) {
      const std::string name = candidate == nullptr ? "" : shortTypeName(Vesk_objectTypeName(candidate));
      return candidate == nullptr || ((!isArray || name.rfind("NDArray", 0) == 0) && (!isList || name == "ArrayList"));
    };
    if (choice % 3 != 0 && !pool_.empty())
      if (void* known = pool_[choice / 3 % pool_.size()]; fits(known)) return known;
    void* made = makeObject(isArray ? oneOf(kStart) : oneOf(kOthers));
    if (!fits(made)) made = nullptr;
    pool_.push_back(made);
    return made;
  }

  Value argument(const Operation& operation, std::size_t position) {
    const bool isList = (operation.name == "fillRandomList" && position == 0) ||
                        (operation.name == "initNdArrayFilled" && position == 1);
    const bool isArray = !isList && (position == 0 || (operation.parameters == "oo" && take() % 4 != 0));
    Value value;
    switch (operation.parameters[position]) {
      case 'o':
        value.object = object(isArray, isList);
        break;
      case 'd':
        value.real = oneOf(kReals);
        break;
      case 's':
        value.text = take() % 8 == 0 ? "vesk.math.NDArray<vesk.Int>" : kDoubleArray;
        break;
      case 'v':
        value.values.assign(128, 0.25);
        break;
      default:
        value.integer = static_cast<signed char>(take());
    }
    return value;
  }

  std::string step() {
    const Native& native = natives()[take() % natives().size()];
    const unsigned control = take();
    Values arguments;
    for (std::size_t i = 0; i < native.operation->parameters.size(); ++i)
      arguments.push_back(argument(*native.operation, i));
    if (control % 8 == 0) host::collect();
    Fault fault{control & 64 ? Fault::Of::Host : Fault::Of::Native, 1 + control % 8, (control & 32) != 0};
    Outcome outcome;
    log_ = native.name + "(";
    for (const Value& one : arguments)
      log_ += (one.object == nullptr || !hasObjectMagic(one.object) ? std::to_string(one.integer)
                                                                    : Vesk_objectTypeName(one.object)) +
              std::string("; ");
    const std::string problem =
        checkCall(native, arguments, withFaults_ && control >= 128 ? &fault : nullptr, &outcome);
    if (outcome.result.object != nullptr && hasObjectMagic(outcome.result.object))
      pool_.push_back(outcome.result.object);
    if (pool_.size() > 12) pool_.erase(pool_.begin());
    return problem;
  }

  const std::vector<unsigned char>& bytes_;
  bool withFaults_;
  std::size_t next_ = 0;
  std::vector<void*> pool_;  // what the program may use again; all of it is kept
  std::string log_;          // the call at hand
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
