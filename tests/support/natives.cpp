#include "support/natives.h"

#include <algorithm>
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
    static auto& operations = *new std::vector<Operation>(elementwiseOperations());
    for (Operation& operation : arrayOperations()) operations.push_back(std::move(operation));
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

Native nativeOf(const std::string& operation, const host::Module& module) {
  const auto isIt = [&](const Native& native) { return native.operation->name == operation; };
  const Native& native = *std::find_if(natives().begin(), natives().end(), isIt);
  return {native.name, native.operation, module.symbol(native.name)};
}

namespace {

constexpr unsigned long kSeed = 20240229;

// Runs what may throw a native exception and notes which.
template <class Run>
void catching(std::string& raised, Run run) {
  try {
    run();
  } catch (const std::bad_alloc&) {
    raised = "std::bad_alloc";
  } catch (const std::length_error&) {
    raised = "std::length_error";
  } catch (const std::logic_error&) {
    raised = "std::logic_error";
  }
}

void arm(const Fault& fault) {
  if (fault.of == Fault::Of::Native) return failNativeAllocation(fault.nth, fault.forEver);
  host::failAllocation(fault.nth, fault.forEver ? host::Failing::ForEver : host::Failing::Once);
}

struct Disarm {
  Fault* fault;
  ~Disarm() {
    const bool ofNative = endFailingNativeAllocation();
    const bool ofHost = host::endFailing();
    if (fault != nullptr) fault->happened = ofNative || ofHost;
  }
};

// The elements as the language sees them, whatever holds them.
std::vector<double> elementsOf(Ref node) {
  if (node == nullptr) return {};
  const auto size = static_cast<std::size_t>(std::max(node->size, 0LL));
  if (node->buffer && node->buffer->ready && node->buffer->count == size) return node->buffer->values;
  Ref list = node->kind == model::Kind::List ? node : node->data;
  std::vector<double> elements = list == nullptr ? std::vector<double>{} : model::listAsDoubles(list);
  if (model::usesBuffer(node)) elements.resize(size);
  return elements;
}

}  // namespace

std::vector<double> valuesOf(void* arrayOrList) {
  World world;
  return elementsOf(world.see(arrayOrList));
}

Outcome callNative(const Native& native, const Values& arguments, Fault* fault) {
  const host::NativeCallCheck check;
  Outcome outcome;
  catching(outcome.raised, [&] {
    const Disarm disarm{fault};
    if (fault != nullptr) arm(*fault);
    outcome.result = native.operation->call(native.entry, arguments);
  });
  if (const auto raised = host::takeException()) outcome.raised += raised->typeName + ": " + raised->message;
  if (const auto problem = check.problem()) outcome.raised += " and " + *problem;
  return outcome;
}

namespace {

// The arguments as they were, and what the model made of them.
struct Expectation {
  World world;
  Values arguments;
  Outcome outcome;
};

void look(Expectation& seen, const Values& arguments) {
  seen.arguments = arguments;
  for (Value& argument : seen.arguments) argument.node = seen.world.see(argument.object);
}

// Returns how many requests the host may decline.
unsigned expect(Expectation& made, const Native& native, unsigned declined) {
  Model model{made.world, declined};
  host::seedFastRandom(kSeed);
  try {
    catching(made.outcome.raised, [&] { made.outcome.result = native.operation->model(model, made.arguments); });
  } catch (const Raised& raised) {
    made.outcome.raised = raised.what();
    made.outcome.result.node = raised.returned;
  }
  host::seedFastRandom(kSeed);
  return model.requests;
}

// A number is read before it is boxed: an array that nobody else keeps may then be gone, and looks like no object.
bool hasDied(const Value& argument) {
  return argument.node != nullptr && !argument.node->type.empty() && !hasObjectMagic(argument.object);
}

std::string differenceBetween(const Expectation& expected, const Outcome& actual) {
  if (expected.outcome.raised != actual.raised)
    return "expected \"" + expected.outcome.raised + "\", the native did \"" + actual.raised + "\"";
  Comparison comparison(expected.world);
  World after;
  const Ref wanted = expected.outcome.result.node;
  const Ref result = after.see(actual.result.object);
  if (wanted != nullptr && result != nullptr && wanted->kind == Node::Kind::Other && wanted->buffer) {
    const auto* drawn = static_cast<const double*>(actual.result.object);  // bare memory, the sum behind the values
    result->buffer = wanted->buffer;
    result->buffer->values.assign(drawn, drawn + wanted->buffer->count);
    result->buffer->sum = drawn[wanted->buffer->count];
  }
  comparison.compare("result", wanted, result);
  for (const Value& argument : expected.arguments)
    if (!hasDied(argument)) comparison.compare("argument", argument.node, after.see(argument.object));
  const double real = expected.outcome.result.real;
  return sameDouble(real, actual.result.real) ? comparison.difference() : "expected " + std::to_string(real);
}

bool keptTheirValues(const Values& arguments) {
  World after;
  return std::all_of(arguments.begin(), arguments.end(), [&](const Value& argument) {
    const std::vector<double> was = elementsOf(argument.node);
    const std::vector<double> is = elementsOf(after.see(argument.object));
    return std::equal(was.begin(), was.end(), is.begin(), is.end(), sameDouble);
  });
}

}  // namespace

std::string checkCall(const Native& native, const Values& arguments, Fault* fault, Outcome* outcome) {
  std::deque<Expectation> expected;
  for (unsigned declined = 0, ways = 1; declined < ways; ++declined) {
    look(expected.emplace_back(), arguments);
    const unsigned requests = expect(expected.back(), native, declined);
    if (fault != nullptr && fault->of == Fault::Of::Host && declined == 0 && requests > 0)
      ways = 1U << std::min(requests + 1, 4U);
  }
  Expectation before;
  look(before, arguments);
  const Outcome actual = callNative(native, arguments, fault);
  if (actual.result.object != nullptr) keep(actual.result.object);
  if (outcome != nullptr) *outcome = actual;
  const std::string difference = differenceBetween(expected[0], actual);
  if (difference.empty() || fault == nullptr || !fault->happened) return difference;
  const std::string& name = native.operation->name;
  const bool writes = name.rfind("set", 0) == 0 || name.rfind("init", 0) == 0 || name.rfind("fill", 0) == 0;
  if (actual.raised == "std::bad_alloc" && name != "makeRandomDoubleBuffer")
    return writes || keptTheirValues(before.arguments) ? "" : "arguments changed";
  const auto agrees = [&](const Expectation& one) { return differenceBetween(one, actual).empty(); };
  return std::any_of(expected.begin(), expected.end(), agrees) ? "" : difference;
}

std::string checkCallAlone(const Native& native, const Values& arguments, Fault* fault) {
  Operation alone = *native.operation;
  alone.call = [&](void* entry, const Values& given) {
    releaseKept();
    return native.operation->call(entry, given);
  };
  return checkCall({native.name, &alone, native.entry}, arguments, fault);
}
