// Fields by name. A box answers "_value"; the array fields of any object live in its metadata, which an array and a
// plain object carry inside their record and any other class is given when one is first stored.
#include "host/allocation.h"
#include "host/arrays.h"
#include "host/boxes.h"
#include "host/objects.h"

namespace {

using host::ClassKind;

enum class Field { Value, Data, Shape, Strides, Ndim, Size };

constexpr const char* kFieldNames[] = {"_value", "_data", "_shape", "_strides", "_ndim", "_size"};

// The one field that begins like this.
Field likelyField(const char* name) {
  if (name[0] != '_' || name[1] == 'v') return Field::Value;
  if (name[1] == 'd') return Field::Data;
  if (name[1] == 'n') return Field::Ndim;
  if (name[1] != 's') return Field::Value;
  return name[2] == 'i' ? Field::Size : name[2] == 'h' ? Field::Shape : Field::Strides;
}

Field fieldNamed(const char* name) {
  const Field field = likelyField(name);
  if (__builtin_strcmp(name, kFieldNames[static_cast<int>(field)]) != 0) host::stopProcess("no field \"%s\"", name);
  return field;
}

void countAccess(const char* operation) { host::enterOperation(operation, &host::OperationCounts::fieldAccesses); }

// Null when nothing was ever stored in the fields of such an object.
NdArrayMetadata* fieldsOf(ObjectInstance& object) {
  const ClassKind kind = host::classOf(object);
  if (kind == ClassKind::Array || kind == ClassKind::Plain) return &host::recordAs<host::FieldsRecord>(object).fields;
  return object.metadata;
}

// The record of the object behind a store, after the collection that the store may cause. What it stores must have
// survived that too.
ObjectInstance& storeInto(void* object, void* value, const char* operation) {
  countAccess(operation);
  host::mayCollect();
  if (value != nullptr) host::liveObject(value, operation);
  return host::liveObject(object, operation);
}

NdArrayMetadata& fieldsForStore(ObjectInstance& object) {
  NdArrayMetadata* fields = fieldsOf(object);
  return fields != nullptr ? *fields : host::attachMetadata(host::gThread, object);
}

}  // namespace

long long Vesk_getField_i64(void* object, const char* field) {
  countAccess("Vesk_getField_i64");
  if (object == nullptr) return 0;
  ObjectInstance& instance = host::liveObject(object, "Vesk_getField_i64");
  const Field which = fieldNamed(field);
  if (which == Field::Value) return host::boxAsInteger(instance);
  const NdArrayMetadata* fields = fieldsOf(instance);
  if (fields == nullptr) return 0;
  return which == Field::Size ? fields->size : which == Field::Ndim ? fields->ndim : 0;
}

int Vesk_getField_i1(void* object, const char* field) {
  countAccess("Vesk_getField_i1");
  if (object == nullptr) return 0;
  ObjectInstance& instance = host::liveObject(object, "Vesk_getField_i1");
  return fieldNamed(field) == Field::Value && host::boxAsDouble(instance) != 0;
}

double Vesk_getField_double(void* object, const char* field) {
  countAccess("Vesk_getField_double");
  if (object == nullptr) return 0;
  ObjectInstance& instance = host::liveObject(object, "Vesk_getField_double");
  return fieldNamed(field) == Field::Value ? host::boxAsDouble(instance) : 0;
}

void* Vesk_getField_ptr(void* object, const char* field) {
  countAccess("Vesk_getField_ptr");
  if (object == nullptr) return nullptr;
  const NdArrayMetadata* fields = fieldsOf(host::liveObject(object, "Vesk_getField_ptr"));
  if (fields == nullptr) return nullptr;
  const Field which = fieldNamed(field);
  if (which == Field::Data) return fields->data;
  if (which == Field::Shape) return fields->shape;
  return which == Field::Strides ? fields->strides : nullptr;
}

// A changed rank or shape outdates the extents that the metadata remembers.
void Vesk_setField_i64(void* object, const char* field, long long value) {
  ObjectInstance& instance = storeInto(object, nullptr, "Vesk_setField_i64");
  const Field which = fieldNamed(field);
  if (which == Field::Value) return host::setBoxInteger(instance, value);
  NdArrayMetadata& fields = fieldsForStore(instance);
  if (which == Field::Size) fields.size = value;
  if (which == Field::Ndim) {
    fields.ndim = value;
    fields.prefixValid = 0;
  }
}

void Vesk_setField_double(void* object, const char* field, double value) {
  ObjectInstance& instance = storeInto(object, nullptr, "Vesk_setField_double");
  if (fieldNamed(field) == Field::Value) host::setBoxDouble(instance, value);
}

void Vesk_setField_ptr(void* object, const char* field, void* value) {
  ObjectInstance& instance = storeInto(object, value, "Vesk_setField_ptr");
  NdArrayMetadata& fields = fieldsForStore(instance);
  const Field which = fieldNamed(field);
  if (which == Field::Data) fields.data = value;
  if (which == Field::Strides) fields.strides = value;
  if (which == Field::Shape) {
    fields.shape = value;
    fields.prefixValid = 0;
  }
}
