// Running natives against the model.
#pragma once

#include "support/model.h"

struct Native {
  std::string name;
  const Operation* operation;
  void* entry;
};
// Every native of the loaded module, after the list of exported names.
const std::vector<Native>& natives();
const host::Module& theModule();
// The first native of the operation, in this or another copy of the module.
Native nativeOf(const std::string& operation, const host::Module& module = theModule());

struct Outcome {
  Value result;
  std::string raised;  // "ValueException: shape mismatch", "std::bad_alloc"; empty for success
};

// Which allocation during a call fails: of the host's collector memory or of operator new.
struct Fault {
  enum class Of { Host, Native };
  Of of = Of::Host;
  unsigned long nth = 1;
  bool forEver = false;
  bool happened = false;  // set by the call
};

// Calls the native under the fault; says what it threw or raised and whether it left slots or locks behind.
Outcome callNative(const Native& native, const Values& arguments, Fault* fault = nullptr);

// One call against the model: how results, exceptions and arguments differ, to the bit; empty when they do not. When a
// fault happened, the host may have declined any of the first requests for something that it may decline, and
// std::bad_alloc is fine too if the arguments kept their values or are there to be written. What the native returned
// is kept.
std::string checkCall(const Native& native, const Values& arguments, Fault* fault = nullptr,
                      Outcome* outcome = nullptr);
// The same while nobody but the native keeps its arguments alive: its caller may have them in registers only.
std::string checkCallAlone(const Native& native, const Values& arguments, Fault* fault = nullptr);
