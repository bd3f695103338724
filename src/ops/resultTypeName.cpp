#include "ops/resultTypeName.h"

#include "ndarray/recognition.h"
#include "runtime/hostOperations.h"

namespace {

// The array class of a full type name: its arguments dropped, an empty or unqualified one made canonical.
std::string arrayClassOf(const std::string& fullName) {
  std::string name = trimRuntimeTypeName(fullName);
  if (const auto bracket = name.find('<'); bracket != std::string::npos)
    name = trimRuntimeTypeName(name.substr(0, bracket));
  const bool qualified = name.find('.') != std::string::npos;
  if (name.empty() || (!qualified && shortTypeNameLocal(name) == "NDArray")) return "vesk.math.NDArray";
  return name;
}

}  // namespace

std::string ndArrayResultTypeName(void* operand, const std::string& resultElementType) {
  std::string name = arrayClassOf(runtimeTypeNameOf(operand));
  name += resultElementType.find('.') != std::string::npos ? "<" : "<vesk.";
  name += resultElementType;
  name += '>';
  return name;
}
