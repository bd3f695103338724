// Every operation that the host runtime provides to the module, with its contract. All are called on the thread that
// called the native. "May allocate" means: a collection may run inside, so whatever the caller still needs sits in a
// root slot. None of them takes a list lock, so all may be called while list locks are held. Unless a line says
// otherwise, object arguments are live, non-null language objects and strings are NUL-terminated.
//
// The host promises besides: collection never moves anything; a thread that waits in pthread_mutex_lock counts as
// stopped for the collector; finalizers never call a native; the writable segments and the thread-local storage of a
// loaded module are scanned as roots; collector memory stays mapped until the module's exit-time destructors have run.
#pragma once

#include <string>
#include <string_view>

#include "runtime/records.h"

#define VESK_HOST_API __attribute__((visibility("default")))

extern "C" {

// Fields by name: "_value" of number boxes; "_data", "_shape", "_strides", "_ndim", "_size" of arrays. Getters never
// allocate. Null objects read as zero; an integer or Boolean box read as a double converts.
VESK_HOST_API long long Vesk_getField_i64(void* object, const char* field);
VESK_HOST_API int Vesk_getField_i1(void* object, const char* field);  // non-zero is true
VESK_HOST_API double Vesk_getField_double(void* object, const char* field);
VESK_HOST_API void* Vesk_getField_ptr(void* object, const char* field);  // null when unset

// Stores. May allocate.
VESK_HOST_API void Vesk_setField_i64(void* object, const char* field, long long value);
VESK_HOST_API void Vesk_setField_double(void* object, const char* field, double value);
VESK_HOST_API void Vesk_setField_ptr(void* object, const char* field, void* value);

// A new object of the named type, fields zero or null; "ArrayList", a box class, or a full array type name. May
// allocate. Never null in a healthy host; callers check all the same.
VESK_HOST_API void* Vesk_allocObject(const char* typeName);

// Collector memory, scanned word by word for object pointers; not cleared. May allocate. Null means out of memory.
VESK_HOST_API void* Vesk_gcAlloc(unsigned long bytes);
// Collector memory that holds no object pointers. May allocate. Null means out of memory.
VESK_HOST_API void* Vesk_gcAllocAtomic(unsigned long bytes);

// From registration on, what `*slot` holds at the time of a collection is reachable; slots are unregistered newest
// first. Use RootSlot.
VESK_HOST_API void Vesk_gcRegisterRootSlot(void** slot);
VESK_HOST_API void Vesk_gcUnregisterRootSlot(void** slot);

// Boxes: "Int", "Double", "Boolean". May allocate; never null.
VESK_HOST_API void* Vesk_boxInt(long long value);
VESK_HOST_API void* Vesk_boxDouble(double value);
VESK_HOST_API void* Vesk_boxBool(int value);

// The full runtime type name, interned; valid as long as the process. Never allocates.
VESK_HOST_API const char* Vesk_objectTypeName(void* object);

// A new primitive list of `count` elements of the named type in `*outList` (null on failure); returns the start of
// its elements, null for failure or a count of 0. May allocate: `outList` is a registered slot.
VESK_HOST_API void* vesk_collections_ArrayList_newPrimitiveData(long long count, const char* elementTypeName,
                                                                void** outList);

// Records a pending language exception and returns; nothing else of the runtime is called afterwards but the release
// of root slots. Never allocates collector memory.
VESK_HOST_API void Vesk_raise(const char* exceptionTypeName, const char* message);

}  // extern "C"

// Makes sure the object's finalizer will run. Idempotent. May allocate.
VESK_HOST_API void ensureObjectFinalizerRegistered(ObjectInstance* instance);
// A new array object of the given full type name whose values live in native storage; null on failure. May allocate.
VESK_HOST_API ObjectInstance* allocateInlineNdArrayDoubleObject(const char* typeName);

// A box of the named short type. May allocate; never null.
VESK_HOST_API void* boxIntegerLikeLocal(const std::string& shortTypeName, long long value);
VESK_HOST_API void* boxFloatingLikeLocal(const std::string& shortTypeName, double value);
VESK_HOST_API void* zeroValueForNumericType(const std::string& shortTypeName);

// The value as a 32-bit "Float" stores it. Never allocates.
VESK_HOST_API double veskFloatStorageValue(double value);

// The item's value and true when it is a number box (Booleans count as 0 and 1), else false with `out` unchanged.
// Null is allowed. Never allocates.
VESK_HOST_API bool extractArrayElementInteger(void* item, long long& out);
VESK_HOST_API bool extractArrayElementDouble(void* item, double& out);

// Whether the pointer refers to a language object; any readable address or null may be asked.
VESK_HOST_API bool hasObjectMagic(void* pointer);
// The object's record, or null.
VESK_HOST_API ObjectInstance* getObject(void* object);

// Type-name arithmetic on full names; pure, never allocates collector memory. What each yields for generic and aliased
// names is the host's; the module relies only on equal names giving equal answers.
VESK_HOST_API std::string shortTypeName(const std::string& fullName);
VESK_HOST_API std::string shortTypeNameLocal(const std::string& fullName);
VESK_HOST_API std::string displayFullTypeName(const std::string& name);  // may be empty
VESK_HOST_API std::string baseTypeWithoutGenerics(const std::string& name);
VESK_HOST_API std::string normalizeTypeAliasForLookup(std::string_view name);
VESK_HOST_API std::string trimRuntimeTypeName(std::string_view name);             // empty when nothing is left
VESK_HOST_API std::string firstGenericArgShortType(const std::string& fullName);  // empty without arguments

// The storage of an ArrayList object; never null for one.
VESK_HOST_API ListData* getListData(void* list);
// A box with the sum of the array's elements; null when it raised. May allocate.
VESK_HOST_API void* sumNumericCollection(void* array, const std::string& elementTypeName);

// The instance's metadata, created empty when absent; never null. May allocate: the object is rooted.
VESK_HOST_API NdArrayMetadata* ensureNdArrayMetadata(ObjectInstance* instance);
// The instance's native storage, created when absent; null when it cannot be. May allocate: the object is rooted.
VESK_HOST_API NdArrayDoubleStorage* ensureNdArrayDoubleStorage(ObjectInstance* instance);
// The instance's native storage, or null when it has none or `instance` is null. Never allocates.
VESK_HOST_API NdArrayDoubleStorage* currentNdArrayDoubleStorage(ObjectInstance* instance);

// The next 64 bits of the runtime's fast random stream. Never allocates.
VESK_HOST_API unsigned long nextFastRandomU64();
