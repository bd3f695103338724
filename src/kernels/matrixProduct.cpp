#include "kernels/matrixProduct.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "kernels/cpuDispatch.h"
#include "kernels/dotProduct.h"
#include "kernels/matrixTiles.h"

namespace {

// One pass of a block of rows stays in the second-level cache while the columns pass by, one panel after the other in
// the first. Both limits also bound the scratch memory.
constexpr unsigned long kBlockPassDoubles = 32 * 1024;
constexpr unsigned long kMaxRowPanels = 32;
constexpr unsigned long kMaxColumnPanels = 64;
constexpr unsigned long kLastPass = kPasses - 1;

// Native memory that begins on a cache line, not cleared.
class Scratch {
 public:
  explicit Scratch(unsigned long count) : memory_(new double[count + kLine]) {
    void* start = memory_.get();
    std::size_t space = (count + kLine) * sizeof(double);
    next_ = static_cast<double*>(std::align(kLine * sizeof(double), count * sizeof(double), start, space));
  }
  double* take(unsigned long count) { return std::exchange(next_, next_ + count); }

 private:
  static constexpr unsigned long kLine = 8;
  std::unique_ptr<double[]> memory_;
  double* next_;
};

unsigned long panelsOf(unsigned long count, unsigned long width) { return (count + width - 1) / width; }

MatrixPackLayout rowPackLayout(const MatrixProductShape& shape) {
  const unsigned long passSize = kTileRows * std::max(1UL, shape.inner / kPasses);
  const unsigned long fitting = std::clamp(kBlockPassDoubles / passSize, 1UL, kMaxRowPanels);
  return {shape.inner, std::min(fitting, panelsOf(shape.rows, kTileRows)), kTileRows};
}

MatrixPackLayout columnPackLayout(const MatrixProductShape& shape) {
  return {shape.inner, std::min(kMaxColumnPanels, panelsOf(shape.columns, kTileColumns)), kTileColumns};
}

// Packed rows and columns that are multiplied with each other.
struct Block {
  MatrixPackLayout rowLayout;
  MatrixPackLayout columnLayout;
  double* rowPack;
  double* columnPack;
  double* sums;  // of one panel of columns
  unsigned long rows;
  unsigned long columns;

  TileSteps steps(unsigned long section, unsigned long rowPanel, unsigned long columnPanel) const {
    return {rowPack + rowLayout.begin(section, rowPanel), columnPack + columnLayout.begin(section, columnPanel),
            rowLayout.steps(section)};
  }
};

// Finishes a tile of which only so many rows and columns belong to the product.
template <class Tiles>
void finishEdge(double* out, unsigned long stride, const double* sums, const TileSteps& last,
                const TileSteps& remaining, unsigned long rows, unsigned long columns) {
  double tile[kTileSize];
  Tiles::finish(tile, kTileColumns, sums, last, remaining, 1);
  for (unsigned long i = 0; i < rows; ++i) {
    std::memcpy(out + i * stride, tile + i * kTileColumns, columns * sizeof(double));
  }
}

// Multiplies all rows of the block with one panel of its columns.
template <class Tiles>
void multiplyPanel(double* out, unsigned long stride, const Block& block, unsigned long panel) {
  const unsigned long rowPanels = panelsOf(block.rows, kTileRows);
  for (unsigned long pass = 0; pass < kLastPass; ++pass) {
    Tiles::addPass(pass, block.sums, block.steps(pass, 0, panel), rowPanels);
  }
  const unsigned long columns = std::min(kTileColumns, block.columns - panel * kTileColumns);
  const unsigned long whole = columns == kTileColumns ? block.rows / kTileRows : 0;
  Tiles::finish(out, stride, block.sums, block.steps(kLastPass, 0, panel), block.steps(kPasses, 0, panel), whole);
  for (unsigned long i = whole; i < rowPanels; ++i) {
    const unsigned long top = i * kTileRows;
    finishEdge<Tiles>(out + top * stride, stride, block.sums + i * Tiles::kSums, block.steps(kLastPass, i, panel),
                      block.steps(kPasses, i, panel), std::min(kTileRows, block.rows - top), columns);
  }
}

template <class Tiles>
void multiplyTiled(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  Block block{rowPackLayout(shape), columnPackLayout(shape), nullptr, nullptr, nullptr, 0, 0};
  const unsigned long sumsSize = block.rowLayout.panels * Tiles::kSums;
  Scratch scratch(block.columnLayout.size() + block.rowLayout.size() + sumsSize);
  block.columnPack = scratch.take(block.columnLayout.size());
  block.sums = scratch.take(sumsSize);
  block.rowPack = scratch.take(block.rowLayout.size());

  const unsigned long blockRows = block.rowLayout.panels * kTileRows;
  const unsigned long blockColumns = block.columnLayout.panels * kTileColumns;
  for (unsigned long left = 0; left < shape.columns; left += blockColumns) {
    block.columns = std::min(blockColumns, shape.columns - left);
    packMatrixColumns(block.columnPack, block.columnLayout, rhs + left, block.columns, shape.columns);
    for (unsigned long top = 0; top < shape.rows; top += blockRows) {
      block.rows = std::min(blockRows, shape.rows - top);
      packMatrixRows(block.rowPack, block.rowLayout, lhs + top * shape.inner, block.rows);
      double* const corner = out + top * shape.columns + left;
      for (unsigned long panel = 0; panel * kTileColumns < block.columns; ++panel) {
        multiplyPanel<Tiles>(corner + panel * kTileColumns, shape.columns, block, panel);
      }
    }
  }
}

// With so few rows or columns most of a tile would be computed for nothing.
bool isThin(const MatrixProductShape& shape) { return shape.rows < kTileRows / 2 || shape.columns < kTileColumns / 2; }

// One dot product at a time, with copies of a few columns whose elements are neighbours.
template <class Dot>
void multiplyThin(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape, Dot dot) {
  const auto [rows, inner, columns] = shape;
  Scratch scratch(std::min(columns, kTileColumns) * inner);
  double* const copies = scratch.take(0);
  for (unsigned long left = 0; left < columns; left += kTileColumns) {
    const unsigned long count = std::min(columns - left, kTileColumns);
    for (unsigned long p = 0; p < inner; ++p) {
      for (unsigned long j = 0; j < count; ++j) copies[j * inner + p] = rhs[p * columns + left + j];
    }
    for (unsigned long i = 0; i < rows; ++i) {
      for (unsigned long j = 0; j < count; ++j) {
        out[i * columns + left + j] = dot(lhs + i * inner, copies + j * inner, inner);
      }
    }
  }
}

// A single column lies in memory as its dot products read it.
template <double (*Dot)(const double*, const double*, unsigned long)>
void multiplyWithColumn(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  for (unsigned long i = 0; i < shape.rows; ++i) out[i] = Dot(lhs + i * shape.inner, rhs, shape.inner);
}

}  // namespace

void multiplyMatricesAvx2(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  if (shape.columns == 1) return multiplyWithColumn<dotProductAvx2>(out, lhs, rhs, shape);
  if (isThin(shape)) return multiplyThin(out, lhs, rhs, shape, dotProductAvx2);
  multiplyTiled<Avx2Tiles>(out, lhs, rhs, shape);
}

void multiplyMatricesBaseline(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  if (shape.columns == 1) return multiplyWithColumn<dotProductBaseline>(out, lhs, rhs, shape);
  if (isThin(shape)) return multiplyThin(out, lhs, rhs, shape, dotProductBaseline);
  multiplyTiled<BaselineTiles>(out, lhs, rhs, shape);
}

void multiplyMatrices(double* out, const double* lhs, const double* rhs, const MatrixProductShape& shape) {
  ndArrayCanUseAvx2() ? multiplyMatricesAvx2(out, lhs, rhs, shape) : multiplyMatricesBaseline(out, lhs, rhs, shape);
}
