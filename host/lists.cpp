#include "host/lists.h"

#include <algorithm>
#include <cstring>
#include <ctime>
#include <new>

#include "host/allocation.h"
#include "host/systemMemory.h"
#include "runtime/elementKinds.h"

namespace host {

namespace {

// Those with a mutex, guarded by the heap lock: links from record to record would keep them all alive.
SystemVector<ListRecord*>& lockedLists() {
  static auto& lists = *new (mapTableOrStop(sizeof(SystemVector<ListRecord*>))) SystemVector<ListRecord*>;
  return lists;
}

void makeErrorCheckingMutex(pthread_mutex_t& mutex) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
  pthread_mutex_init(&mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

// Taking an error-checking mutex that one holds oneself is reported at once; a wait for others is over at once too.
bool isHeldByThisThread(pthread_mutex_t& mutex) {
  const timespec longAgo = {0, 0};
  const int error = pthread_mutex_timedlock(&mutex, &longAgo);
  if (error == 0) pthread_mutex_unlock(&mutex);
  return error == EDEADLK;
}

bool isHeld(pthread_mutex_t& mutex) {
  if (pthread_mutex_trylock(&mutex) != 0) return true;
  pthread_mutex_unlock(&mutex);
  return false;
}

ListRecord& listRecord(void* list, const char* operation) {
  ObjectInstance& object = liveObject(list, operation);
  if (classOf(object) != ClassKind::List) stopProcess("%s on a %s", operation, object.typeName.get().c_str());
  return recordAs<ListRecord>(object);
}

unsigned long elementBytes(unsigned char kind) {
  return visitElementKind(
      kind, [](auto element) { return element.kWidth; }, [] { return sizeof(void*); });
}

// Gives a new list its `count` elements, all zero: inline where they fit, else in `storage`.
void fillWithZeros(ListData& list, unsigned char kind, unsigned long count, void* storage) {
  const unsigned long width = elementBytes(kind);
  if (kind == kObjectListKind) {
    if (storage != nullptr) list.objects.data = static_cast<void**>(storage);
    list.objects.size = count;
    list.objects.capacity = std::max(count, list.objects.capacity);
    std::memset(list.objects.data, 0, count * width);
    return;
  }
  list.primitiveKind = kind;
  list.primitives.elementSize = width;
  if (storage != nullptr) list.primitives.data = static_cast<unsigned char*>(storage);
  list.primitives.size = count;
  list.primitives.capacity = storage != nullptr ? count : SmallPrimitiveBuffer::kInlineBytes / width;
  std::memset(list.primitives.data, 0, count * width);
}

// A list of `count` zero elements or nulls; null when there is no memory. Both blocks are one allocation.
ListRecord* makeFilledList(ThreadState& thread, unsigned char kind, unsigned long count) {
  const unsigned long width = elementBytes(kind);
  if (count >= 1UL << 46) return nullptr;
  const bool isInline = count * width <= (kind == kObjectListKind ? SmallObjectVector::kInlineSlots * sizeof(void*)
                                                                  : SmallPrimitiveBuffer::kInlineBytes);
  const unsigned long storageCharge = isInline ? 0 : chargeOf(count * width);
  if (!beginAllocation(thread, chargeOf(sizeof(ListRecord)) + storageCharge)) return nullptr;
  ListRecord* record = makeListRecord(thread);
  if (record == nullptr) return nullptr;
  void* storage = nullptr;
  if (!isInline) {
    storage = allocateCell(thread, count * width, kind == kObjectListKind ? CellState::Scanned : CellState::Atomic);
    if (storage == nullptr) return nullptr;
  }
  fillWithZeros(record->list, kind, count, storage);
  return record;
}

}  // namespace

void initializeList(ListRecord& record) {
  ListData& list = *new (&record.list) ListData;
  list.needsLock = 0;
  list.primitiveKind = kObjectListKind;
  list.primitives.data = list.primitives.inlineBytes;
  list.primitives.size = list.primitives.capacity = list.primitives.elementSize = 0;
  std::memset(list.objects.inlineSlots, 0, sizeof list.objects.inlineSlots);
  list.objects.data = list.objects.inlineSlots;
  list.objects.size = 0;
  list.objects.capacity = SmallObjectVector::kInlineSlots;
  list.mutex = nullptr;
  list.legacyIntegerCount = list.legacyDoubleCount = 0;
  record.lockedPlace = 0;
}

void releaseList(ListRecord& record) {
  if (record.lockedPlace == 0) return;
  SystemVector<ListRecord*>& lists = lockedLists();
  lists[record.lockedPlace - 1] = lists.back();
  lists.back()->lockedPlace = record.lockedPlace;
  lists.pop_back();
  if (isHeld(record.mutex)) return noteMisuse(gThread, "a list was found dead while its lock was held");
  pthread_mutex_destroy(&record.mutex);
}

unsigned long listLocksHeldByThisThread() {
  const HeapLock lock;
  unsigned long held = 0;
  for (ListRecord* record : lockedLists()) {
    if (isHeldByThisThread(record->mutex)) ++held;
  }
  return held;
}

void giveListLock(void* list) {
  ListRecord& record = listRecord(list, "giveListLock");
  const HeapLock lock;
  if (record.lockedPlace == 0) {
    makeErrorCheckingMutex(record.mutex);
    lockedLists().push_back(&record);
    record.lockedPlace = lockedLists().size();
  }
  record.list.mutex = &record.mutex;
  record.list.needsLock = 1;
}

bool listLockHeld(void* list) {
  ListRecord& record = listRecord(list, "listLockHeld");
  return record.lockedPlace != 0 && isHeld(record.mutex);
}

void* newObjectList() { return &makeObject(gThread, internType("ArrayList")); }

void* newPrimitiveList(unsigned char kind, unsigned long count, bool named) {
  ListRecord* record = makeFilledList(gThread, kind, count);
  if (record == nullptr) throw std::bad_alloc();
  if (named) record->list.elementTypeName = RuntimeTypeName(&internType(kElementKindNames[kind]).name);
  return record;
}

void setListTypeName(void* list, const char* fullName) {
  listRecord(list, "setListTypeName").object.typeName = RuntimeTypeName(&internType(fullName).name);
}

}  // namespace host

ListData* getListData(void* list) {
  host::enterOperation("getListData");
  return &host::listRecord(list, "getListData").list;
}

// A name of no primitive kind gives an object list of nulls.
void* vesk_collections_ArrayList_newPrimitiveData(long long count, const char* elementTypeName, void** outList) {
  host::ThreadState& thread = host::enterOperation("vesk_collections_ArrayList_newPrimitiveData");
  const host::TypeInfo& type = host::internType(elementTypeName);
  host::ListRecord* record =
      count < 0 ? nullptr : host::makeFilledList(thread, type.elementKind, static_cast<unsigned long>(count));
  *outList = record;
  if (record == nullptr) return nullptr;
  host::mayCollect();  // from here on the list lives in the caller's slot
  const bool isPrimitive = type.elementKind != kObjectListKind;
  if (isPrimitive) {
    record->list.elementTypeName = RuntimeTypeName(&host::internType(kElementKindNames[type.elementKind]).name);
  }
  if (count == 0) return nullptr;
  return isPrimitive ? static_cast<void*>(record->list.primitives.data) : record->list.objects.data;
}
