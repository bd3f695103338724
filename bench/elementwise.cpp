// The element-wise operations that the processor does in a few instructions: the whole native, its kernel alone, the
// making of the result alone, and what the machine needs for the same bytes.
#include "harness.h"
#include "kernels/binaryArithmetic.h"
#include "kernels/unaryFloat.h"
#include "kernels/unaryPreserve.h"
#include "machineLimits.h"
#include "ndarray/resultArray.h"

namespace bench {
namespace {

using Kernel = void (*)(double* out, const double* lhs, const double* rhs, unsigned long length);
using Instruction = void (*)(unsigned long length);

template <NdArrayBinaryArithmeticOp Op>
void binary(double* out, const double* lhs, const double* rhs, unsigned long length) {
  applyBinaryArithmeticAvx2(out, lhs, rhs, length, Op);
}
template <NdArrayUnaryPreserveOp Op>
void preserve(double* out, const double* in, const double*, unsigned long length) {
  applyUnaryPreserveAvx2(out, in, length, Op);
}
template <NdArrayUnaryFloatOp Op>
void unaryFloat(double* out, const double* in, const double*, unsigned long length) {
  applyUnaryFloatAvx2(out, in, length, Op);
}

struct Operation {
  const char* name;
  const char* method;
  bool isBinary;
  Kernel kernel;
  Instruction instruction;  // null where moving the bytes is the limit
  bool isCurve;             // measured at every length
};

using Arithmetic = NdArrayBinaryArithmeticOp;
using Preserve = NdArrayUnaryPreserveOp;
using Float = NdArrayUnaryFloatOp;
constexpr Operation kOperations[] = {
    {"add", "_addNative", true, binary<Arithmetic::Add>, nullptr, true},
    {"subtract", "_subNative", true, binary<Arithmetic::Subtract>, nullptr, false},
    {"multiply", "_mulNative", true, binary<Arithmetic::Multiply>, nullptr, false},
    {"divide", "_divNative", true, binary<Arithmetic::Divide>, divideFromRegisters, true},
    {"abs", "_absNative", false, preserve<Preserve::Abs>, nullptr, false},
    {"floor", "_floorNative", false, preserve<Preserve::Floor>, nullptr, true},
    {"ceil", "_ceilNative", false, preserve<Preserve::Ceil>, nullptr, false},
    {"trunc", "_truncNative", false, preserve<Preserve::Trunc>, nullptr, false},
    {"round", "_roundNative", false, preserve<Preserve::Round>, nullptr, false},
    {"sqrt", "_sqrtNative", false, unaryFloat<Float::Sqrt>, squareRootFromRegisters, true},
    {"degrees", "_degreesNative", false, unaryFloat<Float::Degrees>, nullptr, false},
    {"radians", "_radiansNative", false, unaryFloat<Float::Radians>, nullptr, false},
};

constexpr unsigned long kJudged[] = {1'000, 100'000};

// Additions in memory are all traffic: there the whole native is held against the peer that does the same.
bool isAgainstPeer(const Operation& operation, unsigned long length) {
  return operation.kernel == binary<Arithmetic::Add> && length == 10'000'000;
}

const char* limitOf(const Operation& operation, unsigned long length) {
  if (isAgainstPeer(operation, length)) return "NumPy";
  if (operation.instruction != nullptr) return "instruction or bytes";
  return operation.isBinary ? "triad of the bytes" : "copy of the bytes";
}

double goalOf(const Operation& operation, unsigned long length) {
  if (isAgainstPeer(operation, length)) return 1.0;
  if (operation.instruction != nullptr) return length == kJudged[1] ? 1.1 : 0;
  return length == kJudged[0] || length == kJudged[1] ? 1.15 : 0;
}

void addNativeParts(const Row& row, const Operation& operation) {
  addPart(row, "native", [operation](unsigned long length) {
    return elementwiseCall(operation.method, operation.isBinary, doubleArray(length, 0), doubleArray(length, 1));
  });
  addResultPart(row);
}

// Adds the part that runs `work` over the operands' values into reused memory.
void addLoop(const Row& row, const char* part, Kernel work) {
  addPart(row, part, [work](unsigned long length) {
    return [=, out = reusedOutput(length), lhs = valuesOf(doubleArray(length, 0)),
            rhs = valuesOf(doubleArray(length, 1))] {
      work(out, lhs, rhs, length);
      benchmark::ClobberMemory();
    };
  });
}

void testDomain(double*, const double* in, const double*, unsigned long length) {
  benchmark::DoNotOptimize(unaryFloatRow(NdArrayUnaryFloatOp::Sqrt).anyOutside(in, length));
}

void copyFirst(double* out, const double* in, const double*, unsigned long length) { copyLanes(out, in, length); }

void addOperation(const Operation& operation, unsigned long length) {
  const Row row{std::string("element-wise/") + operation.name, length, goalOf(operation, length),
                limitOf(operation, length)};
  addNativeParts(row, operation);
  addLoop(row, "kernel", operation.kernel);
  if (operation.kernel == unaryFloat<Float::Sqrt>) addLoop(row, "domain", testDomain);
  addLoop(row, "limit bytes", operation.isBinary ? triadLanes : copyFirst);
  if (operation.instruction != nullptr) {
    addPart(row, "limit instruction",
            [instruction = operation.instruction](unsigned long count) { return [=] { instruction(count); }; });
  }
}

}  // namespace

void addResultPart(const Row& row) {
  addPart(row, "result", [](unsigned long length) {
    return [=, array = doubleArray(length)] {
      RootSlot result;
      makeNdArrayDoubleResult(result, array, Vesk_objectTypeName(array), true, length);
    };
  });
}

void addElementwiseRows() {
  for (const Operation& operation : kOperations) {
    if (!operation.isCurve) {
      for (const unsigned long length : kJudged) addOperation(operation, length);
    } else {
      for (const unsigned long length : kCurveLengths) addOperation(operation, length);
    }
  }
}

}  // namespace bench
