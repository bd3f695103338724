// The eleven kinds of packed list elements: one row per kind with its code, name, stored type and conversions, and the
// one switch over kind codes. Elements lie in byte storage of any alignment, so they are loaded and stored by copy.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "runtime/integerRules.h"
#include "runtime/records.h"

inline constexpr unsigned char kObjectListKind = 0;
inline constexpr unsigned char kBooleanKind = 11;

// One kind. `Stored` is the packed type; a Boolean is a byte that is true when not zero.
template <unsigned char Code, class StoredType>
struct ElementKind {
  using Stored = StoredType;
  static constexpr unsigned char kCode = Code;
  static constexpr unsigned long kWidth = sizeof(Stored);
  static constexpr bool kIsBoolean = Code == kBooleanKind;
  static constexpr bool kIsFloating = std::is_floating_point_v<Stored>;

  // An element read from or written to its bytes, which may lie anywhere.
  static Stored load(const unsigned char* element) {
    Stored value;
    std::memcpy(&value, element, sizeof value);
    return value;
  }
  static void store(unsigned char* element, Stored value) { std::memcpy(element, &value, sizeof value); }

  // As a signed 64-bit integer: floating values truncate, the largest unsigned ones turn negative bit for bit.
  static long long toInteger(Stored value) {
    if constexpr (kIsFloating) return doubleToInteger(value);
    if constexpr (kIsBoolean) return value != 0 ? 1 : 0;
    return static_cast<long long>(value);
  }
  // As a double: integers convert from their signed 64-bit value.
  static double toDouble(Stored value) {
    if constexpr (kIsFloating) return static_cast<double>(value);
    return static_cast<double>(toInteger(value));
  }
};

// Calls `visit(ElementKind<...>{})` for codes 1 to 11 and `otherwise()` for any other code.
template <class Visit, class Otherwise>
inline auto visitElementKind(unsigned char code, Visit&& visit, Otherwise&& otherwise) {
  switch (code) {
    case 1:
      return visit(ElementKind<1, std::int8_t>{});
    case 2:
      return visit(ElementKind<2, std::uint8_t>{});
    case 3:
      return visit(ElementKind<3, std::int16_t>{});
    case 4:
      return visit(ElementKind<4, std::uint16_t>{});
    case 5:
      return visit(ElementKind<5, std::int32_t>{});
    case 6:
      return visit(ElementKind<6, std::uint32_t>{});
    case 7:
      return visit(ElementKind<7, std::int64_t>{});
    case 8:
      return visit(ElementKind<8, std::uint64_t>{});
    case 9:
      return visit(ElementKind<9, float>{});
    case 10:
      return visit(ElementKind<10, double>{});
    case kBooleanKind:
      return visit(ElementKind<kBooleanKind, std::uint8_t>{});
    default:
      return otherwise();
  }
}

// Calls `loop(stride)` with the distance in bytes of neighbouring elements, as a constant where they touch: they nearly
// always do, and compilers make vector code of it.
template <class Kind, class Loop>
inline void withElementStride(Kind, unsigned long elementSize, Loop&& loop) {
  if (elementSize == Kind::kWidth) {
    loop(std::integral_constant<unsigned long, Kind::kWidth>{});
  } else {
    loop(elementSize);
  }
}

// Short type names by kind code; index 0 is the object list.
inline constexpr const char* kElementKindNames[] = {"",     "SByte", "Byte",  "Short", "UShort", "Int",
                                                    "UInt", "Long",  "ULong", "Float", "Double", "Boolean"};

// Float and Double.
inline bool isFloatingElementKind(unsigned char code) {
  return visitElementKind(
      code, [](auto kind) { return kind.kIsFloating; }, [] { return false; });
}
// Integer kinds and Boolean.
inline bool isIntegralElementKind(unsigned char code) {
  return visitElementKind(
      code, [](auto kind) { return !kind.kIsFloating; }, [] { return false; });
}
