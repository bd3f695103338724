// Tiles of a matrix product: 6 rows by 8 columns of sums, computed from the packed operands of matrixPack.h. Pass c of
// a tile adds up, for each of its dot products, the terms that lane c of a dot product alone adds up (dotProduct.h):
// from +0.0, in index order, every product rounded first. The two forms differ in how they combine the passes.
#pragma once

#include "kernels/matrixPack.h"

inline constexpr unsigned long kTileSize = kTileRows * kTileColumns;

// The operands of one section of a tile.
struct TileSteps {
  const double* rows;     // 6 doubles a step
  const double* columns;  // 8 doubles a step, on a multiple of 32 bytes
  unsigned long count;
};

// Tiles whose passes are combined as ((C0 + C1) + C2) + C3. Only for processors with AVX2.
struct Avx2Tiles {
  static constexpr unsigned long kSums = kTileSize;  // doubles kept of a tile between its passes

  // Runs one of the first three passes, which come in order, of `tiles` tiles below each other; their rows follow each
  // other.
  static void addPass(unsigned long pass, double* sums, TileSteps steps, unsigned long tiles);
  // Runs the last pass of these tiles, adds the remaining terms one by one and stores the tiles' rows in `out`.
  static void finish(double* out, unsigned long stride, const double* sums, TileSteps last, TileSteps remaining,
                     unsigned long tiles);
};

// The same with the passes combined as (C0 + C1) + (C2 + C3).
struct BaselineTiles {
  static constexpr unsigned long kSums = 2 * kTileSize;

  static void addPass(unsigned long pass, double* sums, TileSteps steps, unsigned long tiles);
  static void finish(double* out, unsigned long stride, const double* sums, TileSteps last, TileSteps remaining,
                     unsigned long tiles);
};
