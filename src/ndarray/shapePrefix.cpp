#include "ndarray/shapePrefix.h"

#include "ndarray/shapes.h"
#include "runtime/hostOperations.h"
#include "runtime/listDataLock.h"
#include "runtime/listStorage.h"

void refreshNdArrayShapePrefix(NdArrayMetadata& meta) {
  meta.dim0 = 0;
  meta.dim1 = 0;
  meta.prefixValid = 0;
  if (meta.shape == nullptr) return;
  ListData& list = *getListData(meta.shape);
  const ListDataLock lock(list);
  const unsigned long count = listLogicalSize(list);
  if (meta.ndim < 1 || count < (meta.ndim == 1 ? 1UL : 2UL)) return;
  meta.dim0 = shapeElement(list, 0);
  if (count > 1) meta.dim1 = shapeElement(list, 1);  // also of a one-dimensional array with a longer list
  meta.prefixValid = 1;
}
