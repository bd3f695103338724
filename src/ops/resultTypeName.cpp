#include "ops/resultTypeName.h"

#include <cstring>

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

// The last name that this thread asked for and its answer, which depends on the name alone. Names that do not fit are
// not remembered. Plain arrays, because thread-local storage here has no destructors.
struct Memo {
  static constexpr std::size_t kLongest = 127;

  char name[kLongest + 1];
  char result[kLongest + 1];
};
constinit thread_local Memo gMemo{};

void remember(const char* name, const std::string& result) {
  const std::size_t length = std::strlen(name);
  if (length > Memo::kLongest || result.size() > Memo::kLongest) return;
  std::memcpy(gMemo.name, name, length + 1);
  std::memcpy(gMemo.result, result.c_str(), result.size() + 1);
}

}  // namespace

std::string ndArrayResultTypeName(void* operand, const std::string& resultElementType) {
  std::string name = arrayClassOf(runtimeTypeNameOf(operand));
  name += resultElementType.find('.') != std::string::npos ? "<" : "<vesk.";
  name += resultElementType;
  name += '>';
  return name;
}

NdArrayDoubleResultTypeName::NdArrayDoubleResultTypeName(void* operand) : text_(gMemo.result) {
  const char* name = Vesk_objectTypeName(operand);
  if (name != nullptr && gMemo.result[0] != '\0' && std::strcmp(name, gMemo.name) == 0) return;
  computed_ = ndArrayResultTypeName(operand, "Double");
  text_ = computed_.c_str();
  if (name != nullptr) remember(name, computed_);  // never null here, where the name has been taken apart already
}
