// Unknown operation codes, which no native passes.
#include "ops/binaryArithmetic.h"
#include "ops/binaryFloat.h"
#include "support/verbs.h"

namespace {

TEST(ElementFamilies, takeAnUnknownOperationForTheirFirst) {
  void* words = arrayOver(objectList({keep(host::newString("four"))}));
  for (const int code : {-1, 20, 1 << 30}) {
    const auto arithmetic = static_cast<NdArrayBinaryArithmeticOp>(code);
    expectSameDoubles(valuesOf(keep(applyNdArrayBinaryArithmetic(boxedInts({4}), boxedInts({5}), arithmetic))), {9});
    expectRaised("TypeError", "+ expects a NDArray operand",
                 [&] { applyNdArrayBinaryArithmetic(words, nullptr, arithmetic); });
    expectRaised("TypeError", "atan2 expects numeric values",
                 [&] { applyNdArrayBinaryFloat(words, words, static_cast<NdArrayBinaryFloatOp>(code)); });
  }
}

}  // namespace
