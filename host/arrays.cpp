#include "host/arrays.h"

#include <new>

#include "host/allocation.h"
#include "host/boxes.h"
#include "host/collector.h"
#include "runtime/listStorage.h"

namespace host {

namespace {

// Adds up what the list holds, in index order; false at an item that is no number.
bool sumList(const ListData& list, double& sum) {
  const unsigned long count = listLogicalSize(list);
  for (unsigned long i = 0; i < count; ++i) {
    if (list.primitiveKind != kObjectListKind) {
      sum += primitiveListReadF64Runtime(list, i);
      continue;
    }
    void* item = list.objects.data[i];
    if (!isBox(item)) return false;
    sum += boxAsDouble(*static_cast<ObjectInstance*>(item));
  }
  return true;
}

bool hasInlineFields(const ObjectInstance& object) {
  return classOf(object) == ClassKind::Array || classOf(object) == ClassKind::Plain;
}

bool hasStorage(const ObjectInstance& object) { return object.header == (headerOf(ClassKind::Array, 0) | kStorageBit); }

NdArrayDoubleStorage* storageOf(ObjectInstance* instance) {
  if (instance == nullptr || !hasStorage(*instance)) return nullptr;
  return &recordAs<ArrayRecord>(*instance).storage;
}

}  // namespace

NdArrayMetadata& attachMetadata(ThreadState& thread, ObjectInstance& object) {
  const bool isInline = hasInlineFields(object);
  if (!beginAllocation(thread, isInline ? 0 : chargeOf(sizeof(NdArrayMetadata)))) throw std::bad_alloc();
  ObjectInstance& survivor = liveObject(&object, "attaching metadata");
  if (isInline) {
    survivor.metadata = &recordAs<FieldsRecord>(survivor).fields;
    survivor.metadata->prefixValid = 0;
  } else {
    void* memory = allocateCell(thread, sizeof(NdArrayMetadata), CellState::Scanned);
    if (memory == nullptr) throw std::bad_alloc();
    survivor.metadata = new (memory) NdArrayMetadata{};
  }
  return *survivor.metadata;
}

void releaseArray(ObjectInstance& object) {
  ++gFinalizersRun;
  if (!hasStorage(object)) return;
  NdArrayDoubleStorage& storage = recordAs<ArrayRecord>(object).storage;
  storage.heapValues = nullptr;
  storage.count = 0;
  storage.ready = 0;
}

}  // namespace host

ObjectInstance* allocateInlineNdArrayDoubleObject(const char* typeName) {
  host::ThreadState& thread = host::enterOperation("allocateInlineNdArrayDoubleObject");
  return host::makeArray(thread, host::internType(typeName));
}

NdArrayMetadata* ensureNdArrayMetadata(ObjectInstance* instance) {
  host::ThreadState& thread = host::enterOperation("ensureNdArrayMetadata");
  ObjectInstance& object = host::liveObject(instance, "ensureNdArrayMetadata");
  if (object.metadata == nullptr) return &host::attachMetadata(thread, object);
  host::mayCollect();
  return host::liveObject(instance, "ensureNdArrayMetadata").metadata;
}

// Only arrays have room for it. The 32 values are left as they are.
NdArrayDoubleStorage* ensureNdArrayDoubleStorage(ObjectInstance* instance) {
  host::ThreadState& thread = host::enterOperation("ensureNdArrayDoubleStorage");
  const bool creates = !host::hasStorage(host::liveObject(instance, "ensureNdArrayDoubleStorage"));
  if (creates && !host::beginAllocation(thread, 0)) return nullptr;
  if (!creates) host::mayCollect();
  ObjectInstance& object = host::liveObject(instance, "ensureNdArrayDoubleStorage");
  if (host::classOf(object) != host::ClassKind::Array) return nullptr;
  auto& record = host::recordAs<host::ArrayRecord>(object);
  if (creates) {
    auto& storage = *new (&record.storage) NdArrayDoubleStorage;
    storage.heapValues = nullptr;
    storage.count = 0;
    storage.cachedSum = 0;
    storage.heapAllocated = storage.ready = storage.sumValid = 0;
    object.header |= host::kStorageBit;
  }
  return &record.storage;
}

NdArrayDoubleStorage* currentNdArrayDoubleStorage(ObjectInstance* instance) {
  host::enterOperation("currentNdArrayDoubleStorage");
  return host::storageOf(instance);
}

// Ready native values count before the data list. Nothing is needed of the array once the sum is known, so it may be
// collected while the box is made.
void* sumNumericCollection(void* array, const std::string& elementTypeName) {
  host::enterOperation("sumNumericCollection");
  ObjectInstance& object = host::liveObject(array, "sumNumericCollection");
  double sum = 0;
  const NdArrayDoubleStorage* storage = host::storageOf(&object);
  if (storage != nullptr && storage->ready != 0) {
    const double* values = storage->heapAllocated != 0 ? storage->heapValues : storage->inlineValues;
    for (unsigned long i = 0; i < storage->count; ++i) sum += values[i];
  } else if (void* list = Vesk_getField_ptr(array, "_data"); list != nullptr) {
    if (!host::sumList(*getListData(list), sum)) {
      Vesk_raise("TypeError", "sum expects numeric NDArray items");
      return nullptr;
    }
  }
  return boxFloatingLikeLocal(elementTypeName, sum);
}
