#include "host/boxes.h"

#include "host/allocation.h"
#include "runtime/elementKinds.h"

namespace host {

namespace {

bool holdsDouble(const ObjectInstance& box) { return isFloatingElementKind(boxKindOf(box)); }

void* boxedInteger(ThreadState& thread, const TypeInfo& type, long long value) {
  ObjectInstance& box = makeObject(thread, type);
  setBoxInteger(box, value);
  return &box;
}

void* boxedDouble(ThreadState& thread, const TypeInfo& type, double value) {
  ObjectInstance& box = makeObject(thread, type);
  setBoxDouble(box, value);
  return &box;
}

}  // namespace

bool isBox(void* item) { return isObjectStart(item) && classOf(*static_cast<ObjectInstance*>(item)) == ClassKind::Box; }

long long boxAsInteger(ObjectInstance& object) {
  if (classOf(object) != ClassKind::Box) return 0;
  const auto& box = recordAs<BoxRecord>(object);
  return holdsDouble(object) ? doubleToInteger(box.floating) : box.integer;
}

double boxAsDouble(ObjectInstance& object) {
  if (classOf(object) != ClassKind::Box) return 0;
  const auto& box = recordAs<BoxRecord>(object);
  return holdsDouble(object) ? box.floating : static_cast<double>(box.integer);
}

void setBoxInteger(ObjectInstance& object, long long value) {
  if (classOf(object) != ClassKind::Box) return;
  auto& box = recordAs<BoxRecord>(object);
  if (holdsDouble(object)) {
    box.floating = static_cast<double>(value);
  } else {
    box.integer = boxKindOf(object) == kBooleanKind ? value != 0 : value;
  }
}

void setBoxDouble(ObjectInstance& object, double value) {
  if (classOf(object) != ClassKind::Box) return;
  if (holdsDouble(object)) {
    recordAs<BoxRecord>(object).floating = value;
  } else if (boxKindOf(object) == kBooleanKind) {
    setBoxInteger(object, value != 0);
  } else {
    setBoxInteger(object, doubleToInteger(value));
  }
}

}  // namespace host

void* Vesk_boxInt(long long value) {
  return host::boxedInteger(host::enterOperation("Vesk_boxInt"), host::internType("Int"), value);
}

void* Vesk_boxDouble(double value) {
  return host::boxedDouble(host::enterOperation("Vesk_boxDouble"), host::internType("Double"), value);
}

void* Vesk_boxBool(int value) {
  return host::boxedInteger(host::enterOperation("Vesk_boxBool"), host::internType("Boolean"), value);
}

// A name that is no integer class makes an "Int".
void* boxIntegerLikeLocal(const std::string& shortTypeName, long long value) {
  host::ThreadState& thread = host::enterOperation("boxIntegerLikeLocal");
  const host::TypeInfo& type = host::internType(shortTypeName.c_str());
  return host::boxedInteger(thread, isIntegralElementKind(type.elementKind) ? type : host::internType("Int"), value);
}

// A name that is not "Float" makes a "Double".
void* boxFloatingLikeLocal(const std::string& shortTypeName, double value) {
  host::ThreadState& thread = host::enterOperation("boxFloatingLikeLocal");
  const host::TypeInfo& type = host::internType(shortTypeName.c_str());
  return host::boxedDouble(thread, isFloatingElementKind(type.elementKind) ? type : host::internType("Double"), value);
}

// A name that is no number class makes an "Int".
void* zeroValueForNumericType(const std::string& shortTypeName) {
  host::ThreadState& thread = host::enterOperation("zeroValueForNumericType");
  const host::TypeInfo& type = host::internType(shortTypeName.c_str());
  return &host::makeObject(thread, type.kind == host::ClassKind::Box ? type : host::internType("Int"));
}

double veskFloatStorageValue(double value) {
  host::enterOperation("veskFloatStorageValue");
  return static_cast<double>(static_cast<float>(value));
}

bool extractArrayElementInteger(void* item, long long& out) {
  host::enterOperation("extractArrayElementInteger");
  if (!host::isBox(item)) return false;
  out = host::boxAsInteger(*static_cast<ObjectInstance*>(item));
  return true;
}

bool extractArrayElementDouble(void* item, double& out) {
  host::enterOperation("extractArrayElementDouble");
  if (!host::isBox(item)) return false;
  out = host::boxAsDouble(*static_cast<ObjectInstance*>(item));
  return true;
}
