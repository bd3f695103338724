#include "kernels/matrixPack.h"

#include <emmintrin.h>

#include <algorithm>
#include <cstring>

namespace {

// Two rows at a time: the four values of a block go to the four passes, in pairs of neighbouring rows.
void packRowPair(double* const (&sections)[kPasses + 1], const MatrixPackLayout& layout, const double* even,
                 const double* odd) {
  const unsigned long end = layout.steps(0) * kTileRows;
  for (unsigned long to = 0; to < end; to += kTileRows, even += kPasses, odd += kPasses) {
    for (unsigned long pass = 0; pass < kPasses; pass += 2) {
      const __m128d first = _mm_loadu_pd(even + pass), second = _mm_loadu_pd(odd + pass);
      _mm_storeu_pd(sections[pass] + to, _mm_unpacklo_pd(first, second));
      _mm_storeu_pd(sections[pass + 1] + to, _mm_unpackhi_pd(first, second));
    }
  }
  for (unsigned long step = 0; step < layout.steps(kPasses); ++step) {
    sections[kPasses][step * kTileRows] = even[step];
    sections[kPasses][step * kTileRows + 1] = odd[step];
  }
}

// `advance` is the distance between the matrix rows of neighbouring steps.
void packColumnSteps(double* to, unsigned long steps, const double* from, unsigned long count, unsigned long advance) {
  for (unsigned long step = 0; step < steps; ++step, to += kTileColumns) {
    const double* const row = from + step * advance;
    if (count >= kTileColumns) {
      std::memcpy(to, row, kTileColumns * sizeof(double));
    } else {
      for (unsigned long j = 0; j < kTileColumns; ++j) to[j] = row[std::min(j, count - 1)];
    }
  }
}

}  // namespace

void packMatrixRows(double* pack, const MatrixPackLayout& layout, const double* rows, unsigned long count) {
  const auto row = [&](unsigned long i) { return rows + std::min(i, count - 1) * layout.inner; };
  for (unsigned long top = 0; top < count; top += kTileRows) {
    for (unsigned long i = 0; i < kTileRows; i += 2) {
      double* sections[kPasses + 1];
      for (unsigned long section = 0; section <= kPasses; ++section) {
        sections[section] = pack + layout.begin(section, top / kTileRows) + i;
      }
      packRowPair(sections, layout, row(top + i), row(top + i + 1));
    }
  }
}

void packMatrixColumns(double* pack, const MatrixPackLayout& layout, const double* columns, unsigned long count,
                       unsigned long stride) {
  for (unsigned long left = 0; left < count; left += kTileColumns) {
    for (unsigned long section = 0; section <= kPasses; ++section) {
      const unsigned long first = section < kPasses ? section : kPasses * layout.steps(0);
      packColumnSteps(pack + layout.begin(section, left / kTileColumns), layout.steps(section),
                      columns + left + first * stride, count - left, section < kPasses ? kPasses * stride : stride);
    }
  }
}
