// Type names: interned once, with the class that they name. Names are packages with dots, the class, and arguments in
// angle brackets ("vesk.math.NDArray<vesk.Double>") or behind "__T_" ("vesk.math.NDArray__T_Double").
#pragma once

#include <string>
#include <string_view>

namespace host {

enum class ClassKind : unsigned char { Plain, Box, List, Array, String };

// Lives as long as the process; `name` is what records and embedders point to.
struct TypeInfo {
  const std::string name;
  ClassKind kind;
  unsigned char elementKind;  // of a box, as in elementKinds.h; 0 for all other classes
};

// The one TypeInfo of this name.
const TypeInfo& internType(const char* name);

}  // namespace host
