#include "host/objects.h"

#include <new>

#include "host/allocation.h"
#include "host/arrays.h"
#include "host/boxes.h"
#include "host/lists.h"

namespace host {

namespace {

struct RecordSize {
  unsigned bytes;
  unsigned sizeClass;
  unsigned charge;
};
template <class Record>
constexpr RecordSize kSizeOf = {sizeof(Record), sizeClassOf(sizeof(Record) + kRedzoneBytes),
                                static_cast<unsigned>(chargeOf(sizeof(Record)))};
// By class, in the order of ClassKind.
constexpr RecordSize kRecordSizes[] = {kSizeOf<FieldsRecord>, kSizeOf<BoxRecord>, kSizeOf<ListRecord>,
                                       kSizeOf<ArrayRecord>, kSizeOf<StringRecord>};

void initializeRecord(ObjectInstance& object, ClassKind kind) {
  if (kind == ClassKind::Box) {
    recordAs<BoxRecord>(object).integer = 0;  // all bits zero is 0.0 too
  } else if (kind == ClassKind::List) {
    initializeList(recordAs<ListRecord>(object));
  } else if (kind == ClassKind::String) {
    recordAs<StringRecord>(object).length = 0;
  } else {
    recordAs<FieldsRecord>(object).fields = {};
  }
}

ObjectInstance* initializeObject(void* memory, const TypeInfo& type, ClassKind kind) {
  if (memory == nullptr) return nullptr;
  auto* object = new (memory) ObjectInstance{};
  object->header = headerOf(kind, kind == ClassKind::Box ? type.elementKind : 0);
  object->typeName = RuntimeTypeName(&type.name);
  if (kind == ClassKind::Array) object->finalizer = reinterpret_cast<void*>(&releaseArray);
  initializeRecord(*object, kind);
  return object;
}

// Null when there is no memory.
ObjectInstance* makeObjectOf(ThreadState& thread, const TypeInfo& type, ClassKind kind) {
  const RecordSize size = kRecordSizes[static_cast<int>(kind)];
  if (!beginAllocation(thread, size.charge)) return nullptr;
  return initializeObject(takeCell(thread, size.sizeClass, size.bytes, CellState::Object), type, kind);
}

}  // namespace

ObjectInstance& makeObject(ThreadState& thread, const TypeInfo& type) {
  ObjectInstance* object = makeObjectOf(thread, type, type.kind);
  if (object == nullptr) throw std::bad_alloc();
  return *object;
}

ObjectInstance* makeArray(ThreadState& thread, const TypeInfo& type) {
  return makeObjectOf(thread, type, ClassKind::Array);
}

ListRecord* makeListRecord(ThreadState& thread) {
  void* memory = allocateCell(thread, sizeof(ListRecord), CellState::Object);
  ObjectInstance* object = initializeObject(memory, internType("ArrayList"), ClassKind::List);
  return object == nullptr ? nullptr : &recordAs<ListRecord>(*object);
}

void releaseOwned(ObjectInstance& object) {
  if (classOf(object) == ClassKind::List) releaseList(recordAs<ListRecord>(object));
  if (object.finalizerRegistered != 0 && object.finalizer != nullptr) {
    reinterpret_cast<void (*)(ObjectInstance&)>(object.finalizer)(object);
  }
}

bool isRecordSound(const char* record) {
  const auto& object = *reinterpret_cast<const ObjectInstance*>(record);
  return object.header >> 32 == kObjectMagic && classOf(object) <= ClassKind::String &&
         object.finalizerRegistered <= 1 && object.doubleTypeChecked <= 1 && object.isDoubleElementArray <= 1;
}

void* newString(std::string_view text) {
  ThreadState& thread = gThread;
  const unsigned long bytes = sizeof(StringRecord) + text.size();
  ObjectInstance* object = nullptr;
  if (beginAllocation(thread, chargeOf(bytes))) {
    object =
        initializeObject(allocateCell(thread, bytes, CellState::Object), internType("vesk.String"), ClassKind::String);
  }
  if (object == nullptr) throw std::bad_alloc();
  auto& string = recordAs<StringRecord>(*object);
  string.length = text.size();
  text.copy(string.text, text.size());
  return object;
}

}  // namespace host

void* Vesk_allocObject(const char* typeName) {
  return &host::makeObject(host::enterOperation("Vesk_allocObject"), host::internType(typeName));
}

const char* Vesk_objectTypeName(void* object) {
  host::enterOperation("Vesk_objectTypeName", &host::OperationCounts::typeNames);
  const RuntimeTypeName& name = host::liveObject(object, "Vesk_objectTypeName").typeName;
  return name.holdsName() ? name.get().c_str() : nullptr;
}

bool hasObjectMagic(void* pointer) {
  host::enterOperation("hasObjectMagic");
  return host::isObjectStart(pointer);
}

ObjectInstance* getObject(void* object) {
  host::enterOperation("getObject");
  return static_cast<ObjectInstance*>(object);
}

void ensureObjectFinalizerRegistered(ObjectInstance* instance) {
  host::enterOperation("ensureObjectFinalizerRegistered");
  host::mayCollect();
  host::liveObject(instance, "ensureObjectFinalizerRegistered").finalizerRegistered = 1;
}
