// The records behind language objects. Each begins with the shared ObjectInstance, so a record's address is the object
// pointer; the header word carries the object magic, the class and, for arrays, whether native storage exists.
#pragma once

#include <cstdint>

#include "host/stopProcess.h"
#include "host/threadState.h"
#include "host/typeNames.h"

namespace host {

// A number box. Floating classes use `floating`, all others `integer`; a Boolean is 0 or 1.
struct BoxRecord {
  ObjectInstance object;
  union {
    long long integer;
    double floating;
  };
};

struct ListRecord {
  ObjectInstance object;
  ListData list;
  unsigned long lockedPlace;  // in the table of lists that have a mutex, from 1; 0 in all others
  pthread_mutex_t mutex;      // in force when list.mutex refers to it
};

// An object with the array fields. They stand in `fields` from the start; once the instance is given metadata,
// its pointer refers here too, so both are one state.
struct FieldsRecord {
  ObjectInstance object;
  NdArrayMetadata fields;
};

struct ArrayRecord {
  FieldsRecord base;
  NdArrayDoubleStorage storage;  // in force once the header says so
};

struct StringRecord {
  ObjectInstance object;
  unsigned long length;
  char text[];
};

// Header word: magic in the upper half, below it the storage bit, the element kind of a box and the class.
inline constexpr std::uint64_t kObjectMagic = 0xB0C5EA77;
inline constexpr std::uint64_t kStorageBit = 1UL << 16;
// The header of a new object, and what it says.
constexpr std::uint64_t headerOf(ClassKind kind, unsigned char elementKind) {
  return kObjectMagic << 32 | static_cast<std::uint64_t>(elementKind) << 8 | static_cast<std::uint64_t>(kind);
}
inline ClassKind classOf(const ObjectInstance& object) { return static_cast<ClassKind>(object.header & 0xff); }
inline unsigned char boxKindOf(const ObjectInstance& object) { return object.header >> 8 & 0xff; }

// The whole record of an object whose class is known.
template <class Record>
Record& recordAs(ObjectInstance& object) {
  return reinterpret_cast<Record&>(object);
}

// The record of an object that must be live. Freed memory is overwritten, so a dead object has lost its magic.
inline ObjectInstance& liveObject(void* object, const char* operation) {
  auto* instance = static_cast<ObjectInstance*>(object);
  if (instance == nullptr || instance->header >> 32 != kObjectMagic) [[unlikely]] {
    stopProcess("%s on %p, which is no live object", operation, object);
  }
  return *instance;
}

// A new object, fields zero or null. Throws std::bad_alloc. May collect before anything is made.
ObjectInstance& makeObject(ThreadState& thread, const TypeInfo& type);
// The same as an array, whatever the name says; null on failure.
ObjectInstance* makeArray(ThreadState& thread, const TypeInfo& type);

// An empty list for an operation that has begun its allocation, charged for a ListRecord: null when there is no memory.
ListRecord* makeListRecord(ThreadState& thread);

// What an object owns besides its memory goes when it is found dead: the mutex of a list, native storage.
void releaseOwned(ObjectInstance& object);
inline void releaseObject(char* record) {
  auto& object = *reinterpret_cast<ObjectInstance*>(record);
  const bool hasMutex = classOf(object) == ClassKind::List && recordAs<ListRecord>(object).lockedPlace != 0;
  if (hasMutex || object.finalizerRegistered != 0) releaseOwned(object);
}
// Whether a live object's record can be one.
bool isRecordSound(const char* record);

}  // namespace host
