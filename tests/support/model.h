// The slow model: what every native does to language values, restated over snapshots with plain vectors and scalar
// arithmetic, written to be obviously right and sharing no code with the module. Running a native against it compares
// results, exceptions and the state of the arguments to the bit.
#pragma once

#include <functional>

#include "support/snapshot.h"

// One argument of a native, or the result of one; converts to whatever the native's parameter is.
struct Value {
  void* object = nullptr;
  Ref node = nullptr;
  long long integer = 0;
  double real = 0;
  std::optional<std::string> text = std::nullopt;
  std::vector<double> values = {};

  operator void*() const { return object; }
  operator long long() const { return integer; }
  operator int() const { return static_cast<int>(integer); }
  operator double() const { return real; }
  operator const char*() const { return text ? text->c_str() : nullptr; }
  operator const double*() const { return values.empty() ? nullptr : values.data(); }
};
using Values = std::vector<Value>;

struct Outcome {
  Value result;
  std::string raised;  // "ValueException: shape mismatch", "std::bad_alloc"; empty for success
};

// The model of one call. What the host may decline to make (native storage, packed lists, inline arrays, the random
// buffer) is unavailable where bit k of `unavailable` is set for the kth such request.
struct Model {
  World& world;
  unsigned unavailable = 0;
  unsigned requests = 0;

  bool available() { return (unavailable >> requests++ & 1U) == 0; }
};

struct Operation {
  std::string name;
  std::string parameters;  // o object, l integer, i flag, d double, s type name, v doubles
  std::function<Value(void* entry, const Values& arguments)> call;
  std::function<void(Model& model, const Values& arguments, Value& result)> model;
};

// Calls a native of any type with as many of the arguments as it takes.
template <class R, class... A>
Value callTyped(R (*native)(A...), const Values& arguments) {
  return [&]<std::size_t... I>(std::index_sequence<I...>) {
    Value result;
    if constexpr (std::is_void_v<R>)
      native(arguments[I]...);
    else if constexpr (std::is_same_v<R, double>)
      result.real = native(arguments[I]...);
    else
      result.object = native(arguments[I]...);
    return result;
  }
  (std::index_sequence_for<A...>{});
}

namespace model {
std::vector<Operation> elementwiseOperations();
std::vector<Operation> arrayOperations();
}  // namespace model

struct Native {
  std::string name;
  const Operation* operation;
  void* entry;
};

// Every native of the loaded module, after the list of exported names.
const std::vector<Native>& natives();
const host::Module& theModule();

// Which allocation during a call fails: of the host's collector memory or of operator new.
struct Fault {
  enum class Of { Nothing, Host, Native };
  Of of = Of::Nothing;
  unsigned long nth = 1;
  bool forEver = false;
  bool happened = false;  // set by the call
};

// Calls the native under the fault; says what it threw or raised and whether it left slots or locks behind.
Outcome callNative(const Native& native, const Values& arguments, Fault* fault = nullptr);

// What the model expects of a call that follows. With a fault, the host may also decline any of the first requests for
// something that it may decline.
class Expectation {
 public:
  Expectation(const Native& native, const Values& arguments, bool withFault = false);
  // How the call differed from what was expected; empty when it did not. After a fault std::bad_alloc is fine too, if
  // the arguments kept their values.
  std::string difference(const Outcome& actual, bool faultHappened = false) const;

 private:
  struct View {  // the arguments as they were, and what the model made of them
    World world;
    Values arguments;
    Outcome outcome;
  };
  std::string differenceFrom(const View& view, const Outcome& actual) const;
  std::string changedValues() const;

  const Native& native_;
  std::deque<View> views_;  // the first one is untouched
};

// One call against the model; what it returned is kept.
std::string checkCall(const Native& native, const Values& arguments, Fault* fault = nullptr,
                      Outcome* outcome = nullptr);
