// Arrays without a native buffer: items in boxes or packed elements. Nothing is promised here but honest numbers; boxed
// rows stand beside the cost of making as many boxes.
#include <cstdint>

#include "harness.h"
#include "runtime/rootSlot.h"

namespace bench {
namespace {

constexpr unsigned long kLength = 100'000;
constexpr unsigned char kIntKind = 5, kFloatKind = 9;

struct ListCase {
  const char* name;
  const char* method;
  bool isBinary;
  bool isFloat;
  bool isPacked;
};

constexpr ListCase kCases[] = {
    {"add Int boxed", "_addNative", true, false, false},    {"add Int packed", "_addNative", true, false, true},
    {"add Float boxed", "_addNative", true, true, false},   {"add Float packed", "_addNative", true, true, true},
    {"divide Int boxed", "_divNative", true, false, false}, {"divide Int packed", "_divNative", true, false, true},
    {"abs Int boxed", "_absNative", false, false, false},   {"floor Float boxed", "_floorNative", false, true, false},
    {"sqrt Int boxed", "_sqrtNative", false, false, false}, {"sin Float boxed", "_sinNative", false, true, false},
    {"sum Int boxed", "sumNative", false, false, false},    {"sum Int packed", "sumNative", false, false, true},
    {"sum Float boxed", "sumNative", false, true, false},
};

std::string typeOf(const ListCase& list) { return list.isFloat ? "Float" : "Int"; }

void* newBox(const ListCase& list, long long value) {
  return list.isFloat ? boxFloatingLikeLocal("Float", static_cast<double>(value)) : boxIntegerLikeLocal("Int", value);
}

// Values 1 to 100 in turn; absolute values and roots need no negative ones.
long long valueAt(unsigned long i) { return static_cast<long long>(i % 100) + 1; }

void* makeList(const ListCase& list) {
  if (list.isPacked) {
    void* packed = keep(host::newPrimitiveList(list.isFloat ? kFloatKind : kIntKind, kLength));
    unsigned char* const data = getListData(packed)->primitives.data;
    for (unsigned long i = 0; i < kLength; ++i) {
      if (list.isFloat) {
        reinterpret_cast<float*>(data)[i] = static_cast<float>(valueAt(i));
      } else {
        reinterpret_cast<std::int32_t*>(data)[i] = static_cast<std::int32_t>(valueAt(i));
      }
    }
    return packed;
  }
  void* boxes = keep(host::newObjectList());
  SmallObjectVector& items = getListData(boxes)->objects;
  items.reserve(kLength);
  for (; items.size < kLength; ++items.size) items.data[items.size] = newBox(list, valueAt(items.size));
  return boxes;
}

void* makeArray(const ListCase& list) {
  void* array = keep(Vesk_allocObject(("vesk.math.NDArray<vesk." + typeOf(list) + ">").c_str()));
  native<void(void*, long long, int)>("init1DFastNative")(array, kLength, 0);
  Vesk_setField_ptr(array, "_data", makeList(list));
  return array;
}

void addListCase(const ListCase& list) {
  const Row row{std::string("lists/") + list.name, kLength, 0, list.isPacked ? "" : "the boxes alone"};
  addPart(row, "native", [list](unsigned long) {
    static void* lists[2][2][2] = {};  // made at first use: by element type, packing and side
    void*& lhs = lists[list.isFloat][list.isPacked][0];
    void*& rhs = lists[list.isFloat][list.isPacked][1];
    if (lhs == nullptr) lhs = makeArray(list), rhs = makeArray(list);
    return elementwiseCall(list.method, list.isBinary, lhs, rhs);
  });
  if (!list.isPacked) {
    addPart(row, "limit", [list](unsigned long length) {
      return [=] {
        for (unsigned long i = 0; i < length; ++i) benchmark::DoNotOptimize(newBox(list, valueAt(i)));
      };
    });
  }
}

}  // namespace

void addListRows() {
  for (const ListCase& list : kCases) addListCase(list);
}

}  // namespace bench
