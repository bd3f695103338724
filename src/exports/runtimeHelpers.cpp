// What the runtime itself asks of the module.
#include "exports/exportMacro.h"
#include "ndarray/recognition.h"
#include "ndarray/shapePrefix.h"
#include "runtime/listStorage.h"

NDARRAY_EXPORT unsigned long Vesk_listLogicalSizeRuntime(const ListData& list) { return listLogicalSize(list); }
NDARRAY_EXPORT void Vesk_refreshNdArrayShapePrefix(NdArrayMetadata& meta) { refreshNdArrayShapePrefix(meta); }
NDARRAY_EXPORT bool Vesk_isRuntimeNdArrayInstance(const ObjectInstance* instance) {
  return isRuntimeNdArrayInstance(instance);
}
