#include "host/typeNames.h"

#include <cctype>
#include <map>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "host/stopProcess.h"
#include "host/threadState.h"
#include "runtime/elementKinds.h"

namespace host {

constinit thread_local RecentName gRecentNames[kRecentNames] = {};

namespace {

constexpr std::string_view kArgumentMark = "__T_";

// Tables that exit handlers may still use, so they are never destroyed.
struct NameTables {
  std::mutex mutex;
  std::unordered_map<std::string_view, const TypeInfo*> types;  // keys refer to the names in the values
  std::map<std::string, std::string, std::less<>> aliases = {{"vesk.NDArray", "vesk.math.NDArray"}};
};
NameTables& nameTables() {
  static NameTables& made = *new NameTables;
  return made;
}

// Without blanks around it and without the marks of a nullable type behind it.
std::string_view trimmed(std::string_view name) {
  const auto isDecoration = [](char c) { return std::isspace(static_cast<unsigned char>(c)) != 0 || c == '?'; };
  while (!name.empty() && std::isspace(static_cast<unsigned char>(name.front())) != 0) name.remove_prefix(1);
  while (!name.empty() && isDecoration(name.back())) name.remove_suffix(1);
  return name;
}

// Without the arguments, whichever way they are written.
std::string_view withoutArguments(std::string_view name) {
  name = name.substr(0, name.find('<'));
  return trimmed(name.substr(0, name.find(kArgumentMark)));
}

std::string_view lastComponent(std::string_view name) { return trimmed(name.substr(name.rfind('.') + 1)); }

// The first of the arguments in angle brackets, from behind the opening one on.
std::string_view firstBracketArgument(std::string_view arguments) {
  int depth = 0;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const char c = arguments[i];
    if (depth == 0 && (c == ',' || c == '>')) return arguments.substr(0, i);
    depth += c == '<' ? 1 : c == '>' ? -1 : 0;
  }
  return arguments;
}

// Empty when the name has no arguments.
std::string_view firstArgument(std::string_view name) {
  if (const auto bracket = name.find('<'); bracket != name.npos) return firstBracketArgument(name.substr(bracket + 1));
  const auto mark = name.find(kArgumentMark);
  return mark == name.npos ? std::string_view() : name.substr(mark + kArgumentMark.size());
}

std::string_view shortName(std::string_view name) {
  const std::string_view bare = trimmed(name);
  const std::string_view base = bare.substr(0, bare.find('<'));
  return lastComponent(base);
}

// Caller holds the mutex.
TypeInfo classify(const std::string& name, const NameTables& names) {
  const std::string_view base = withoutArguments(name);
  const auto alias = names.aliases.find(base);
  const std::string_view last = lastComponent(alias == names.aliases.end() ? base : std::string_view(alias->second));
  if (last == "NDArray" || name.find("NDArray__T_") != name.npos) return {name, ClassKind::Array, 0};
  if (last == "ArrayList") return {name, ClassKind::List, 0};
  if (last == "String") return {name, ClassKind::String, 0};
  for (unsigned char kind = 1; kind <= kBooleanKind; ++kind) {
    if (last == kElementKindNames[kind]) return {name, ClassKind::Box, kind};
  }
  return {name, ClassKind::Plain, 0};
}

void countTypeNameUse(const char* operation) { enterOperation(operation, &OperationCounts::typeNames); }

}  // namespace

const TypeInfo& findOrInternType(const char* name, RecentName& recent) {
  if (name == nullptr) stopProcess("a type name is null");
  NameTables& names = nameTables();
  const std::lock_guard lock(names.mutex);
  auto found = names.types.find(name);
  if (found == names.types.end()) {
    auto type = std::make_unique<const TypeInfo>(classify(name, names));
    found = names.types.emplace(type->name, type.get()).first;
    static_cast<void>(type.release());  // lives on in the table
  }
  recent = {name, found->second};
  return *found->second;
}

void addTypeAlias(std::string_view alias, std::string_view canonical) {
  NameTables& names = nameTables();
  const std::lock_guard lock(names.mutex);
  names.aliases.insert_or_assign(std::string(alias), std::string(canonical));
}

}  // namespace host

std::string shortTypeName(const std::string& fullName) {
  host::countTypeNameUse("shortTypeName");
  return std::string(host::shortName(fullName));
}

std::string shortTypeNameLocal(const std::string& fullName) {
  host::countTypeNameUse("shortTypeNameLocal");
  return std::string(host::shortName(fullName));
}

// Arguments behind "__T_" are displayed in angle brackets.
std::string displayFullTypeName(const std::string& name) {
  host::countTypeNameUse("displayFullTypeName");
  const std::string_view bare = host::trimmed(name);
  const auto mark = bare.find(host::kArgumentMark);
  if (mark == bare.npos || bare.find('<') != bare.npos) return std::string(bare);
  const std::string_view argument = bare.substr(mark + host::kArgumentMark.size());
  std::string display(bare.substr(0, mark));
  return argument.empty() ? display : display.append("<").append(argument).append(">");
}

std::string baseTypeWithoutGenerics(const std::string& name) {
  host::countTypeNameUse("baseTypeWithoutGenerics");
  return std::string(host::withoutArguments(name));
}

std::string normalizeTypeAliasForLookup(std::string_view name) {
  host::countTypeNameUse("normalizeTypeAliasForLookup");
  host::NameTables& names = host::nameTables();
  const std::lock_guard lock(names.mutex);
  const auto alias = names.aliases.find(name);
  return alias == names.aliases.end() ? std::string(name) : alias->second;
}

std::string trimRuntimeTypeName(std::string_view name) {
  host::countTypeNameUse("trimRuntimeTypeName");
  return std::string(host::trimmed(name));
}

std::string firstGenericArgShortType(const std::string& fullName) {
  host::countTypeNameUse("firstGenericArgShortType");
  return std::string(host::lastComponent(host::withoutArguments(host::firstArgument(fullName))));
}
