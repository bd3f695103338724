// The slow model: what every native does to language values, restated over snapshots with plain vectors and scalar
// arithmetic, written to be obviously right and sharing nothing with the module but the names of the element kinds.
#pragma once

#include <functional>
#include <stdexcept>

#include "support/snapshot.h"

// One argument of a native, or the result of one; converts to whatever the parameter is, there and in the model.
struct Value {
  void* object = nullptr;
  Ref node = nullptr;
  long long integer = 0;
  double real = 0;
  const char* text = nullptr;  // lives as long as the process
  std::vector<double> values = {};

  operator void*() const { return object; }
  operator Ref() const { return node; }
  operator long long() const { return integer; }
  operator int() const { return static_cast<int>(integer); }
  operator double() const { return real; }
  operator const char*() const { return text; }
  operator const double*() const { return values.empty() ? nullptr : values.data(); }
};
using Values = std::vector<Value>;

// The model of one call. What the host may decline to make (native storage, packed lists, inline arrays, the random
// buffer) is unavailable where bit k of `declined` is set for the kth such request.
struct Model {
  World& world;
  unsigned declined = 0;
  unsigned requests = 0;

  bool available() {
    ++requests;
    const bool answer = (declined & 1U) == 0;
    declined >>= 1;
    return answer;
  }
};

// An exception that the model expects; `returned` is what the native returns all the same.
struct Raised : std::runtime_error {
  Raised(const std::string& type, const std::string& message, Ref result = nullptr)
      : std::runtime_error(type + ": " + message), returned(result) {}
  Ref returned;
};

struct Operation {
  std::string name;
  std::string parameters;  // o object, l integer, i flag, d double, s type name, v doubles
  std::function<Value(void* entry, const Values& arguments)> call;
  std::function<Value(Model& model, const Values& arguments)> model;
};
// The operations that the exported names lead to, by name.
std::vector<Operation> elementwiseOperations();
std::vector<Operation> arrayOperations();

// ---- A row from the function that models an operation: its native has the same parameters, with pointers for nodes.

template <class T>
using NativeType = std::conditional_t<std::is_same_v<T, Ref>, void*, T>;

template <class T>
constexpr char codeOf() {
  if (std::is_same_v<T, Ref>) return 'o';
  if (std::is_same_v<T, double>) return 'd';
  if (std::is_integral_v<T>) return std::is_same_v<T, int> ? 'i' : 'l';
  return std::is_same_v<T, const char*> ? 's' : 'v';
}

inline void store(Value& value, void* object) { value.object = object; }
inline void store(Value& value, Ref node) { value.node = node; }
inline void store(Value& value, double real) { value.real = real; }

template <std::size_t... I, class Function>
Value applied(std::index_sequence<I...>, const Values& arguments, Function function) {
  Value result;
  if constexpr (std::is_void_v<decltype(function(arguments[I]...))>)
    function(arguments[I]...);
  else
    store(result, function(arguments[I]...));
  return result;
}

template <class R, class... A>
Operation operation(const char* name, const std::function<R(Model&, A...)>& model) {
  using Each = std::index_sequence_for<A...>;
  const auto call = [](void* entry, const Values& arguments) {
    return applied(Each{}, arguments, reinterpret_cast<NativeType<R> (*)(NativeType<A>...)>(entry));
  };
  const auto modelled = [model](Model& m, const Values& arguments) {
    return applied(Each{}, arguments, [&](A... each) { return model(m, each...); });
  };
  return {name, {codeOf<A>()...}, call, modelled};
}
template <class R, class... A>
Operation operation(const char* name, R (*model)(Model&, A...)) {
  return operation(name, std::function<R(Model&, A...)>(model));
}
// One of a family whose functions share a model.
template <class Op, class... A>
Operation operation(const Op& op, Ref (*model)(Model&, const Op&, A...)) {
  return operation(
      op.name, std::function<Ref(Model&, A...)>([&op, model](Model& m, A... each) { return model(m, op, each...); }));
}
