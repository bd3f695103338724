#include "kernels/matrixTiles.h"

#include <cstring>

#include "kernels/cpuDispatch.h"

// Sums that are kept in registers have names here: compilers leave an array of vectors in memory.

namespace {

struct RowSums {
  __m256d left;
  __m256d right;
};

// All sums of a tile: two vectors for each of six rows leave four registers for the operands.
struct TileSums {
  RowSums row0, row1, row2, row3, row4, row5;
};

NDARRAY_INLINE_AVX2 RowSums loadRow(const double* sums) { return {_mm256_loadu_pd(sums), _mm256_loadu_pd(sums + 4)}; }

NDARRAY_INLINE_AVX2 void storeRow(double* sums, const RowSums& row) {
  _mm256_storeu_pd(sums, row.left);
  _mm256_storeu_pd(sums + 4, row.right);
}

NDARRAY_INLINE_AVX2 RowSums addRows(const RowSums& x, const RowSums& y) {
  return {_mm256_add_pd(x.left, y.left), _mm256_add_pd(x.right, y.right)};
}

NDARRAY_INLINE_AVX2 void addProducts(RowSums& row, const double* element, __m256d left, __m256d right) {
  const __m256d lhs = _mm256_broadcast_sd(element);
  row.left = _mm256_add_pd(row.left, _mm256_mul_pd(lhs, left));
  row.right = _mm256_add_pd(row.right, _mm256_mul_pd(lhs, right));
}

NDARRAY_INLINE_AVX2 TileSums zeroTile() {
  const RowSums zero{_mm256_setzero_pd(), _mm256_setzero_pd()};
  return {zero, zero, zero, zero, zero, zero};
}

NDARRAY_INLINE_AVX2 void storeTile(double* out, unsigned long stride, const TileSums& sums) {
  storeRow(out, sums.row0);
  storeRow(out + stride, sums.row1);
  storeRow(out + 2 * stride, sums.row2);
  storeRow(out + 3 * stride, sums.row3);
  storeRow(out + 4 * stride, sums.row4);
  storeRow(out + 5 * stride, sums.row5);
}

NDARRAY_INLINE_AVX2 TileSums loadTile(const double* sums) {
  return {loadRow(sums),      loadRow(sums + 8),  loadRow(sums + 16),
          loadRow(sums + 24), loadRow(sums + 32), loadRow(sums + 40)};
}

NDARRAY_INLINE_AVX2 TileSums addTiles(const TileSums& x, const TileSums& y) {
  return {addRows(x.row0, y.row0), addRows(x.row1, y.row1), addRows(x.row2, y.row2),
          addRows(x.row3, y.row3), addRows(x.row4, y.row4), addRows(x.row5, y.row5)};
}

NDARRAY_INLINE_AVX2 void addSteps(TileSums& sums, const TileSteps& steps) {
  const double* columns = steps.columns;
  const double* const end = steps.rows + steps.count * kTileRows;
#pragma GCC unroll 2
  for (const double* rows = steps.rows; rows != end; rows += kTileRows, columns += kTileColumns) {
    const __m256d left = _mm256_load_pd(columns), right = _mm256_load_pd(columns + 4);
    addProducts(sums.row0, rows, left, right);
    addProducts(sums.row1, rows + 1, left, right);
    addProducts(sums.row2, rows + 2, left, right);
    addProducts(sums.row3, rows + 3, left, right);
    addProducts(sums.row4, rows + 4, left, right);
    addProducts(sums.row5, rows + 5, left, right);
  }
}

// The baseline keeps two rows of a tile in registers at a time.
struct BaselineRow {
  __m128d sums0, sums2, sums4, sums6;
};

inline BaselineRow loadBaselineRow(const double* sums) {
  return {_mm_loadu_pd(sums), _mm_loadu_pd(sums + 2), _mm_loadu_pd(sums + 4), _mm_loadu_pd(sums + 6)};
}

inline void storeBaselineRow(double* sums, const BaselineRow& row) {
  _mm_storeu_pd(sums, row.sums0);
  _mm_storeu_pd(sums + 2, row.sums2);
  _mm_storeu_pd(sums + 4, row.sums4);
  _mm_storeu_pd(sums + 6, row.sums6);
}

inline void addProducts(BaselineRow& row, double element, const double* columns) {
  const __m128d lhs = _mm_set1_pd(element);
  row.sums0 = _mm_add_pd(row.sums0, _mm_mul_pd(lhs, _mm_load_pd(columns)));
  row.sums2 = _mm_add_pd(row.sums2, _mm_mul_pd(lhs, _mm_load_pd(columns + 2)));
  row.sums4 = _mm_add_pd(row.sums4, _mm_mul_pd(lhs, _mm_load_pd(columns + 4)));
  row.sums6 = _mm_add_pd(row.sums6, _mm_mul_pd(lhs, _mm_load_pd(columns + 6)));
}

void addSteps(double (&tile)[kTileSize], const TileSteps& steps) {
  for (unsigned long i = 0; i < kTileRows; i += 2) {
    BaselineRow even = loadBaselineRow(tile + i * kTileColumns), odd = loadBaselineRow(tile + (i + 1) * kTileColumns);
    const double* columns = steps.columns;
    for (const double* rows = steps.rows; rows != steps.rows + steps.count * kTileRows; rows += kTileRows) {
      addProducts(even, rows[i], columns);
      addProducts(odd, rows[i + 1], columns);
      columns += kTileColumns;
    }
    storeBaselineRow(tile + i * kTileColumns, even);
    storeBaselineRow(tile + (i + 1) * kTileColumns, odd);
  }
}

}  // namespace

NDARRAY_TARGET_AVX2 void Avx2Tiles::addPass(unsigned long pass, double* sums, TileSteps steps, unsigned long tiles) {
  for (; tiles != 0; --tiles, sums += kSums, steps.rows += steps.count * kTileRows) {
    TileSums tile = zeroTile();
    addSteps(tile, steps);
    if (pass != 0) tile = addTiles(loadTile(sums), tile);
    storeTile(sums, kTileColumns, tile);
  }
}

NDARRAY_TARGET_AVX2 void Avx2Tiles::finish(double* out, unsigned long stride, const double* sums, TileSteps last,
                                           TileSteps remaining, unsigned long tiles) {
  for (; tiles != 0; --tiles, sums += kSums, out += kTileRows * stride) {
    TileSums tile = zeroTile();
    addSteps(tile, last);
    tile = addTiles(loadTile(sums), tile);
    addSteps(tile, remaining);
    storeTile(out, stride, tile);
    last.rows += last.count * kTileRows;
    remaining.rows += remaining.count * kTileRows;
  }
}

void BaselineTiles::addPass(unsigned long pass, double* sums, TileSteps steps, unsigned long tiles) {
  for (; tiles != 0; --tiles, sums += kSums, steps.rows += steps.count * kTileRows) {
    double tile[kTileSize] = {};
    addSteps(tile, steps);
    double* const to = pass < 2 ? sums : sums + kTileSize;
    for (unsigned long i = 0; i < kTileSize; ++i) to[i] = pass == 1 ? to[i] + tile[i] : tile[i];
  }
}

void BaselineTiles::finish(double* out, unsigned long stride, const double* sums, TileSteps last, TileSteps remaining,
                           unsigned long tiles) {
  for (; tiles != 0; --tiles, sums += kSums) {
    double tile[kTileSize] = {};
    addSteps(tile, last);
    for (unsigned long i = 0; i < kTileSize; ++i) tile[i] = sums[i] + (sums[kTileSize + i] + tile[i]);
    addSteps(tile, remaining);
    last.rows += last.count * kTileRows;
    remaining.rows += remaining.count * kTileRows;
    for (unsigned long i = 0; i < kTileRows; ++i, out += stride) {
      std::memcpy(out, tile + i * kTileColumns, kTileColumns * sizeof(double));
    }
  }
}
