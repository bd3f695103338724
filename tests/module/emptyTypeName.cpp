// The string that stands for "no type name" is one object for the host, the shipped module and everybody else.
#include <dlfcn.h>

#include "support/verbs.h"

namespace {
thread_local const std::string* gAskedFor = nullptr;
}

// Stands before the host's operation of this name, to see the very string that the module hands over.
std::string baseTypeWithoutGenerics(const std::string& name) {
  constexpr const char* kSymbol = "_Z23baseTypeWithoutGenericsRKNSt7__cxx1112basic_stringIcSt11char_traitsIcESaIcEEE";
  gAskedFor = &name;
  return reinterpret_cast<std::string (*)(const std::string&)>(dlsym(RTLD_NEXT, kSymbol))(name);
}

TEST(EmptyTypeName, isOneObjectInTheWholeProcess) {
  const host::Module module(host::defaultModulePath());
  void* isArray = module.symbol("Vesk_isRuntimeNdArrayInstance");
  const ObjectInstance nameless{};
  EXPECT_FALSE(reinterpret_cast<bool (*)(const ObjectInstance*)>(isArray)(&nameless));
  EXPECT_EQ(gAskedFor, &RuntimeTypeName().get());
}
