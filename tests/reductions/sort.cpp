// Sorting where scenarios do not reach: many sizes and densities of NaN against a plain reference, data off its
// alignment, lists whose element width is not their kind's.
#include "reductions/sort.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

#include "support/modelValues.h"

namespace {

using Keyed = std::pair<double, void*>;

constexpr auto kKey = [](const Keyed& item) { return item.first; };

// Few different numbers, so that equal ones meet, zeros of both signs only where their order is kept; every NaN has
// bits of its own.
std::vector<Keyed> samples(std::size_t count, unsigned nanPercent) {
  std::mt19937_64 random(count);
  std::vector<Keyed> items(count);
  for (std::size_t i = 0; i < count; ++i) {
    const double number = std::ldexp(static_cast<double>(random() % 64) - 32, static_cast<int>(random() % 2) * 700);
    const double value = number == 0 && count <= 32 && i % 2 == 0 ? -0.0 : number;
    items[i].first = random() % 100 < nanPercent ? std::bit_cast<double>(0x7FF8000000000001 + i) : value;
  }
  return items;
}

TEST(Sort, buffersMatchThePlainReferenceBitForBit) {
  for (unsigned long size = 0; size < 4200; size += size < 70 ? 1 : size / 3) {
    for (const unsigned nanPercent : {0U, 3U, 50U, 97U, 100U}) {
      std::vector<Keyed> items = samples(size, nanPercent);
      std::vector<double> values;
      for (const Keyed& item : items) values.push_back(item.first);
      sortNdArrayDoubleBufferAscending({values.data(), size});
      model::sortBy(items, kKey);
      for (unsigned long i = 0; i < size; ++i) {
        ASSERT_EQ(std::bit_cast<std::uint64_t>(values[i]), std::bit_cast<std::uint64_t>(items[i].first))
            << size << ' ' << nanPercent;
      }
    }
  }
}

TEST(Sort, itemsMoveWithTheirKeys) {
  for (const unsigned long size : {5UL, 32UL, 33UL, 200UL}) {
    std::vector<Keyed> items = samples(size, 20);
    for (Keyed& item : items) item.second = box("Double", item.first);
    std::vector<void*> boxes;
    for (const Keyed& item : items) boxes.push_back(item.second);
    void* array = arrayOver(objectList(boxes));
    void** sorted = dataOf(array).objects.data;
    sortNdArray1D(array);
    model::sortBy(items, kKey);
    for (unsigned long i = 0; i < size; ++i) {
      EXPECT_TRUE(size > 32 || sorted[i] == items[i].second) << i;
      EXPECT_TRUE(sameDouble(valuesOf(array)[i], items[i].first)) << i;
    }
    EXPECT_TRUE(std::is_permutation(sorted, sorted + size, boxes.begin()));
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
