#include <fstream>

#include "support/allocation.h"
#include "support/modelValues.h"

// Never destroyed: threads may be inside natives while the process exits.
const host::Module& theModule() {
  static const auto& module = *new host::Module(host::defaultModulePath());
  return module;
}

const std::vector<Native>& natives() {
  static const auto& all = *[] {
    auto& operations = *new std::vector<Operation>(model::elementwiseOperations());
    for (Operation& operation : model::arrayOperations()) operations.push_back(std::move(operation));
    auto* found = new std::vector<Native>;
    std::ifstream exported(VESK_EXPORTS_FILE);
    for (std::string name, operation; exported >> name >> operation;) {
      operation[0] = static_cast<char>(std::tolower(operation[0]));
      for (const Operation& known : operations)
        if (known.name == operation) found->push_back({name, &known, theModule().symbol(name)});
    }
    return found;
  }();
  return all;
}

namespace {

constexpr unsigned long kSeed = 20240229;

// Runs what may throw and notes what it threw.
template <class Run>
void catching(std::string& raised, Run run) {
  try {
    run();
  } catch (const std::bad_alloc&) {
    raised = "std::bad_alloc";
  } catch (const std::logic_error&) {
    raised = "std::logic_error";
  } catch (const std::exception& error) {
    raised = error.what();
  }
}

class FaultGuard {
 public:
  explicit FaultGuard(Fault* fault) : fault_(fault) {
    if (fault_ == nullptr) return;
    if (fault_->of == Fault::Of::Native) failNativeAllocation(fault_->nth, fault_->forEver);
    if (fault_->of == Fault::Of::Host)
      host::failAllocation(fault_->nth, fault_->forEver ? host::Failing::ForEver : host::Failing::Once);
  }
  ~FaultGuard() {
    const bool ofNative = endFailingNativeAllocation();
    const bool ofHost = host::endFailing();
    if (fault_ != nullptr) fault_->happened = ofNative || ofHost;
  }
  FaultGuard(const FaultGuard&) = delete;
  FaultGuard& operator=(const FaultGuard&) = delete;

 private:
  Fault* fault_;
};

// The elements as the language sees them, whatever holds them.
std::vector<double> elementsOf(Ref node) {
  if (node == nullptr) return {};
  if (node->buffer && node->buffer->ready) return node->buffer->values;
  Ref list = node->kind == model::Kind::List ? node : node->data;
  std::vector<double> elements = list == nullptr ? std::vector<double>{} : model::listAsDoubles(list);
  if (model::usesBuffer(node)) elements.resize(static_cast<std::size_t>(std::max(node->size, 0LL)));
  return elements;
}

}  // namespace

Outcome callNative(const Native& native, const Values& arguments, Fault* fault) {
  const host::NativeCallCheck check;
  Outcome outcome;
  catching(outcome.raised, [&] {
    const FaultGuard guard(fault);
    outcome.result = native.operation->call(native.entry, arguments);
  });
  if (const auto raised = host::takeException()) outcome.raised += raised->typeName + ": " + raised->message;
  if (const auto problem = check.problem()) outcome.raised += " and " + *problem;
  return outcome;
}

Expectation::Expectation(const Native& native, const Values& arguments, bool withFault) : native_(native) {
  for (int declined = -1; declined < (withFault ? 16 : 1); ++declined) {
    View& view = views_.emplace_back();
    view.arguments = arguments;
    for (Value& argument : view.arguments) argument.node = view.world.see(argument.object);
    if (declined < 0) continue;
    host::seedFastRandom(kSeed);
    Model model{view.world, static_cast<unsigned>(declined)};
    catching(view.outcome.raised, [&] { native.operation->model(model, view.arguments, view.outcome.result); });
  }
  host::seedFastRandom(kSeed);
}

std::string Expectation::differenceFrom(const View& view, const Outcome& actual) const {
  const Outcome& expected = view.outcome;
  if (expected.raised != actual.raised)
    return "expected \"" + expected.raised + "\", the native did \"" + actual.raised + "\"";
  if (!sameDouble(expected.result.real, actual.result.real))
    return "expected " + std::to_string(expected.result.real) + ", found " + std::to_string(actual.result.real);
  Comparison comparison(view.world);
  World after;
  if (const auto* drawn = static_cast<const double*>(actual.result.object); expected.result.integer != 0) {
    const long long count = expected.result.integer;
    if (!areUniform({drawn, drawn + count}, drawn[count])) return "the random buffer is not uniform";
  } else {
    comparison.compare("result", expected.result.node, after.see(actual.result.object));
  }
  for (const Value& argument : view.arguments)
    comparison.compare("argument", argument.node, after.see(argument.object));
  return comparison.difference();
}

std::string Expectation::changedValues() const {
  World after;
  for (const Value& argument : views_[0].arguments) {
    const std::vector<double> was = elementsOf(argument.node);
    const std::vector<double> is = elementsOf(after.see(argument.object));
    if (!std::equal(was.begin(), was.end(), is.begin(), is.end(), sameDouble)) return "an argument's values changed";
  }
  return "";
}

std::string Expectation::difference(const Outcome& actual, bool faultHappened) const {
  const std::string& name = native_.operation->name;
  const bool isWriter = name.rfind("set", 0) == 0 || name.rfind("init", 0) == 0 || name.rfind("fill", 0) == 0;
  if (!faultHappened) return differenceFrom(views_[1], actual);
  if (actual.raised == "std::bad_alloc") return isWriter ? "" : changedValues();
  const std::string fromPlain = differenceFrom(views_[1], actual);
  for (std::size_t i = 2; i < views_.size(); ++i)
    if (differenceFrom(views_[i], actual).empty()) return "";
  return fromPlain;
}

std::string checkCall(const Native& native, const Values& arguments, Fault* fault, Outcome* outcome) {
  const Expectation expectation(native, arguments, fault != nullptr);
  const Outcome actual = callNative(native, arguments, fault);
  if (actual.result.object != nullptr) keep(actual.result.object);
  if (outcome != nullptr) *outcome = actual;
  return expectation.difference(actual, fault != nullptr && fault->happened);
}
