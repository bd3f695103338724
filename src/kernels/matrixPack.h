// Operands of a matrix product, rearranged for the tiles that compute it (matrixTiles.h). A panel is one tile's
// share of an operand: 6 rows of the left matrix or 8 columns of the right one. One step of a panel is what it holds at
// one inner index: 6 or 8 neighbouring doubles.
//
// The lanes of a vector are neighbouring columns, so the four lanes of a dot product become four passes over the inner
// indices: pass c takes those that are c modulo four within the full blocks, in order. A pack holds the steps of pass 0
// of all its panels, panel after panel, then those of passes 1, 2 and 3, and then the remaining indices as a fifth
// section; so each pass reads its operands front to back.
#pragma once

inline constexpr unsigned long kTileRows = 6;
inline constexpr unsigned long kTileColumns = 8;
inline constexpr unsigned long kPasses = 4;

struct MatrixPackLayout {
  unsigned long inner;   // inner indices
  unsigned long panels;  // room for so many
  unsigned long width;   // doubles of one step

  // The steps of a section in each panel.
  unsigned long steps(unsigned long section) const { return section < kPasses ? inner / kPasses : inner % kPasses; }
  // Where a section of a panel begins, in doubles.
  unsigned long begin(unsigned long section, unsigned long panel) const {
    return (section * steps(0) * panels + panel * steps(section)) * width;
  }
  unsigned long size() const { return inner * panels * width; }
};

// Copies `count` rows of a row-major matrix with `layout.inner` columns into as many panels as they need. A last panel
// with fewer rows repeats the last one; what comes of the repeats is dropped.
void packMatrixRows(double* pack, const MatrixPackLayout& layout, const double* rows, unsigned long count);

// Copies `count` columns of a row-major matrix with `layout.inner` rows of `stride` doubles, likewise.
void packMatrixColumns(double* pack, const MatrixPackLayout& layout, const double* columns, unsigned long count,
                       unsigned long stride);
