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
    applyNdArrayBinaryArithmetic(words, nullptr, arithmetic);
    EXPECT_EQ(leftovers(), "pending + expects a NDArray operand");
    applyNdArrayBinaryFloat(words, words, static_cast<NdArrayBinaryFloatOp>(code));
    EXPECT_EQ(leftovers(), "pending atan2 expects numeric values");
  }
}

}  // namespace
