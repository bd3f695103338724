#include "ops/listOperand.h"

#include <new>
#include <type_traits>

#include "ndarray/doubleBuffer.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"
#include "runtime/raise.h"

namespace {

using Kind = NdArrayNumericKind;

// One typed loop per packed kind; zeros where the list's elements are too narrow for their kind.
template <class Value>
void readPacked(Value* out, const ListData& list, unsigned long start, unsigned long length) {
  const unsigned char* const first = primitiveElementAt(list, start);
  const auto zeros = [&] { std::fill_n(out, length, Value{}); };
  const auto elements = [&](auto kind) {
    if (list.primitives.elementSize < kind.kWidth) return zeros();
    withElementStride(kind, list.primitives.elementSize, [&](auto stride) {
      for (unsigned long i = 0; i < length; ++i) {
        const auto element = kind.load(first + i * stride);
        if constexpr (std::is_same_v<Value, double>) {
          out[i] = kind.toDouble(element);
        } else {
          out[i] = kind.toInteger(element);
        }
      }
    });
  };
  visitElementKind(list.primitiveKind, elements, zeros);
}

template <class Value, class Get>
void readItems(Value* out, void* const* items, unsigned long length, Get get) {
  for (unsigned long i = 0; i < length; ++i) out[i] = items[i] == nullptr ? Value{} : static_cast<Value>(get(items[i]));
}

// The kind is decided once for the block; each item then costs one field access.
template <class Value>
void readElements(Value* out, const ListData& list, unsigned long start, unsigned long length, Kind kind) {
  if (list.primitiveKind != kObjectListKind) return readPacked(out, list, start, length);
  void* const* items = list.objects.data + start;
  switch (kind) {
    case Kind::Boolean:
      return readItems(out, items, length, [](void* item) { return Vesk_getField_i1(item, "_value") != 0; });
    case Kind::Integer:
      return readItems(out, items, length, [](void* item) { return Vesk_getField_i64(item, "_value"); });
    case Kind::Floating:
      return readItems(out, items, length, [](void* item) {
        const double value = Vesk_getField_double(item, "_value");
        if constexpr (std::is_same_v<Value, double>) return value;
        return static_cast<Value>(doubleToInteger(value));
      });
    default:
      std::fill_n(out, length, Value{});
  }
}

// New boxes of the named type, box i filled by `fill(box, i)`. One slot keeps the box at hand while it is filled.
template <class Fill>
void storeNewBoxes(ListData& out, unsigned long start, unsigned long length, const std::string& typeName, Fill fill) {
  RootSlot box;
  for (unsigned long i = 0; i < length; ++i) {
    box.set(Vesk_allocObject(typeName.c_str()));
    if (box.get() == nullptr) throw std::bad_alloc();
    fill(box.get(), i);
    out.objects.data[start + i] = box.get();
  }
}

}  // namespace

ListData* openDataList(RootSlot& list, void* array) {
  list.set(Vesk_getField_ptr(array, "_data"));
  if (list.get() != nullptr) return getListData(list.get());
  Vesk_raise(kTypeError, kInvalidInstance);
  return nullptr;
}

NdArrayNumericProfile classifyItems(ListData& list) {
  materializePrimitiveI64ListRuntime(list);
  return detectNdArrayNumericProfile(list);
}

void readDoubles(double* out, const ListData& list, unsigned long start, unsigned long length, Kind kind) {
  readElements(out, list, start, length, kind);
}

void readIntegers(long long* out, const ListData& list, unsigned long start, unsigned long length, Kind kind) {
  readElements(out, list, start, length, kind);
}

const double* secondOperandValues(void* operand, ObjectInstance* instance, unsigned long count, double* scratch,
                                  const char* notNumeric) {
  const auto fail = [](const char* exceptionTypeName, const char* message) -> const double* {
    Vesk_raise(exceptionTypeName, message);
    return nullptr;
  };
  const NdArrayDoubleBufferView buffer = ensureNdArrayDoubleBuffer(operand, instance, true, true);
  if (buffer.data != nullptr) return buffer.count == count ? buffer.data : fail(kValueException, kShapeMismatch);
  RootSlot data;
  ListData* list = openDataList(data, operand);
  if (list == nullptr) return nullptr;
  const ListDataLock lock(*list);
  const Kind kind = classifyItems(*list).kind;
  if (kind == Kind::None) return fail(kTypeError, notNumeric);
  if (list->objects.size != count) return fail(kValueException, kShapeMismatch);
  readDoubles(scratch, *list, 0, count, kind);
  return scratch;
}

void storeDoubleBoxes(ListData& out, unsigned long start, const double* values, unsigned long length) {
  for (unsigned long i = 0; i < length; ++i) {
    void* box = Vesk_boxDouble(values[i]);
    out.objects.data[start + i] = box;  // stored at once: nothing can collect in between
  }
}

void storeBoxes(ListData& out, unsigned long start, const double* values, unsigned long length,
                const std::string& typeName) {
  const bool isFloat = typeName == "Float";
  storeNewBoxes(out, start, length, typeName, [=](void* box, unsigned long i) {
    Vesk_setField_double(box, "_value", isFloat ? veskFloatStorageValue(values[i]) : values[i]);
  });
}

void storeBoxes(ListData& out, unsigned long start, const long long* values, unsigned long length,
                const std::string& typeName) {
  storeNewBoxes(out, start, length, typeName,
                [=](void* box, unsigned long i) { Vesk_setField_i64(box, "_value", values[i]); });
}
