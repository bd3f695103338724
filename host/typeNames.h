// Type names: interned once, with the class that they name. Names are packages with dots, the class, and arguments in
// angle brackets ("vesk.math.NDArray<vesk.Double>") or behind "__T_" ("vesk.math.NDArray__T_Double").
#pragma once

#include <cstdint>
#include <cstring>
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

// The names that a thread asked for lately, by the address of the caller's text; the text itself decides.
struct RecentName {
  const char* text;
  const TypeInfo* type;
};
inline constexpr std::uintptr_t kRecentNames = 64;
extern constinit thread_local RecentName gRecentNames[kRecentNames];

// The long way of internType: looks the name up in the process's table, entering it when it is new, and remembers it
// in `recent`. Stops the process for a null name.
const TypeInfo& findOrInternType(const char* name, RecentName& recent);

// The one TypeInfo of this name. An interned name is recognised by its address alone.
inline const TypeInfo& internType(const char* name) {
  RecentName& recent = gRecentNames[reinterpret_cast<std::uintptr_t>(name) >> 3 & (kRecentNames - 1)];
  if (recent.text != name || name == nullptr) return findOrInternType(name, recent);
  const char* known = recent.type->name.c_str();
  return known == name || std::strcmp(known, name) == 0 ? *recent.type : findOrInternType(name, recent);
}

}  // namespace host
