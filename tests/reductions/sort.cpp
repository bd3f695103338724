// Sorting where scenarios do not reach: many sizes and densities of NaN against a plain reference, data off its
// alignment, lists whose element width is not their kind's.
#include "reductions/sort.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <random>

#include "support/modelValues.h"

namespace {

// Few different numbers, so that equal ones meet, zeros of both signs only where their order is kept; every NaN has
// bits of its own.
std::vector<double> samples(std::size_t count, unsigned nanPercent) {
  std::mt19937_64 random(count);
  std::vector<double> values(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double number = std::ldexp(static_cast<double>(random() % 64) - 32, static_cast<int>(random() % 2) * 700);
    const double value = number == 0 && count <= 32 && i % 2 == 0 ? -0.0 : number;
    values[i] = random() % 100 < nanPercent ? std::bit_cast<double>(0x7FF8000000000001 + i) : value;
  }
  return values;
}

std::uint64_t bits(double value) { return std::bit_cast<std::uint64_t>(value); }

TEST(Sort, buffersMatchThePlainReferenceBitForBit) {
  for (unsigned long size = 0; size < 4200; size += size < 70 ? 1 : size / 3) {
    for (const unsigned nanPercent : {0U, 3U, 50U, 97U, 100U}) {
      std::vector<double> values = samples(size, nanPercent), expected = values;
      sortNdArrayDoubleBufferAscending({values.data(), size});
      model::sortBy(expected, [](double value) { return value; });
      ASSERT_TRUE(std::ranges::equal(values, expected, {}, bits, bits)) << size << ' ' << nanPercent;
    }
  }
}

TEST(Sort, packedElementsLieAnywhereButAsWideAsTheirKind) {
  for (unsigned char kind = 1; kind <= 11; ++kind) {
    Numbers values;
    for (int i = 0; i < 40; ++i) values.push_back(kind == 11 ? i * 5 % 2 : i * 23 % 41 + 1);
    void* array = arrayOver(packedList(kind, values));
    SmallPrimitiveBuffer& elements = dataOf(array).primitives;
    elements.reserve(elements.capacity + 1);
    std::memmove(elements.data + 1, elements.data, 40 * elements.elementSize);
    elements.data += 1;
    const std::string before(reinterpret_cast<char*>(elements.data), 20 * elements.elementSize);
    elements.elementSize *= 2, elements.size /= 2;
    sortNdArray1D(array);
    EXPECT_EQ(before, std::string(reinterpret_cast<char*>(elements.data), before.size())) << int{kind};
    elements.elementSize /= 2, elements.size *= 2;
    sortNdArray1D(array);
    std::sort(values.begin(), values.end());
    EXPECT_EQ(valuesOf(array), std::vector<double>(values.begin(), values.end())) << int{kind};
  }
}

}  // namespace
